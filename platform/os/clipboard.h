// The clipboard port: text only.
//
// Kit code reaches the clipboard through Clipboard(), which works on the
// installed TClipboardPort. The default keeps the text in the process, so a
// copy and a paste within one run meet; a front end installs a port onto
// the desktop's clipboard. SetClipboardPort borrows the port, which must
// outlive its installation.
#pragma once

#include "platform/rtl/ustring.h"

class TClipboardPort {
 public:
  virtual ~TClipboardPort() = default;
  virtual bool HasText() const = 0;
  virtual String GetText() const = 0;
  virtual void SetText(const String& text) = 0;
  virtual void Clear() = 0;
};

// The default: text held in memory, for the life of the process.
class TMemoryClipboard final : public TClipboardPort {
 public:
  bool HasText() const override { return has_; }
  String GetText() const override { return text_; }
  void SetText(const String& text) override { text_ = text; has_ = true; }
  void Clear() override { text_ = String(); has_ = false; }

 private:
  String text_;
  bool has_ = false;
};

// Installs a port (null: the in-process default); returns the one replaced.
TClipboardPort* SetClipboardPort(TClipboardPort* port);

// Clipboard formats the kit asks about; only text is carried.
constexpr unsigned CF_TEXT = 1;
constexpr unsigned CF_UNICODETEXT = 13;

// The historical clipboard object, over the installed port.
class TClipboard {
 public:
  String AsText() const;
  void SetAsText(const String& text);
  void Clear();
  bool HasFormat(unsigned format) const;
  // Open and Close bracket several calls; they only count here.
  void Open() { ++openCount_; }
  void Close() { if (openCount_ > 0) --openCount_; }

 private:
  int openCount_ = 0;
};

TClipboard* Clipboard();

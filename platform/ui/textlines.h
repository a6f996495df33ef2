// The lines of a multi-line text control as a TStrings: every read splits
// the control's text (at CR LF, CR or LF) and every write joins the lines
// with CR LF and sets the text again, so the text stays the one value.
#pragma once

#include <functional>
#include <vector>

#include "platform/rtl/stringlist.h"

class TTextLines final : public TStrings {
 public:
  TTextLines(std::function<String()> getText, std::function<void(const String&)> setText)
      : getText_(std::move(getText)), setText_(std::move(setText)) {}

  String Get(int Index) const override;
  int GetCount() const override { return static_cast<int>(Split().size()); }
  void Put(int Index, const String& S) override;
  void Insert(int Index, const String& S) override;
  void Delete(int Index) override;
  void Clear() override { setText_(String()); }

  // The lines of a text; a break at the very end adds no empty line.
  static std::vector<String> SplitText(const String& text);

 private:
  std::vector<String> Split() const { return SplitText(getText_()); }
  void Join(const std::vector<String>& lines);

  std::function<String()> getText_;
  std::function<void(const String&)> setText_;
};

#include "platform/os/clipboard.h"

namespace {

TMemoryClipboard& DefaultPort() {
  static TMemoryClipboard port;
  return port;
}

TClipboardPort* installed = nullptr;

TClipboardPort& Port() { return installed ? *installed : DefaultPort(); }

}  // namespace

TClipboardPort* SetClipboardPort(TClipboardPort* port) {
  TClipboardPort* previous = installed;
  installed = port;
  return previous;
}

String TClipboard::AsText() const { return Port().HasText() ? Port().GetText() : String(); }

void TClipboard::SetAsText(const String& text) { Port().SetText(text); }

void TClipboard::Clear() { Port().Clear(); }

bool TClipboard::HasFormat(unsigned format) const {
  return (format == CF_TEXT || format == CF_UNICODETEXT) && Port().HasText();
}

TClipboard* Clipboard() {
  static TClipboard clipboard;
  return &clipboard;
}

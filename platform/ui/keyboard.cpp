#include "platform/ui/keyboard.h"

#include <array>

#include "platform/rtl/sysutils.h"

namespace {

std::array<bool, 256>& KeysDown() {
  static std::array<bool, 256> keys{};
  return keys;
}

bool IsDown(Word key) { return key < 256 && KeysDown()[key]; }

// US layout: the unshifted and shifted character of the punctuation keys.
struct TOemKey {
  Word Key;
  WideChar Plain, Shifted;
};
constexpr TOemKey kOemKeys[] = {
    {VK_OEM_1, u';', u':'},      {VK_OEM_PLUS, u'=', u'+'}, {VK_OEM_COMMA, u',', u'<'},
    {VK_OEM_MINUS, u'-', u'_'},  {VK_OEM_PERIOD, u'.', u'>'}, {VK_OEM_2, u'/', u'?'},
    {VK_OEM_3, u'`', u'~'},      {VK_OEM_4, u'[', u'{'},    {VK_OEM_5, u'\\', u'|'},
    {VK_OEM_6, u']', u'}'},      {VK_OEM_7, u'\'', u'"'},
};
constexpr char16_t kShiftedDigits[] = u")!@#$%^&*(";

struct TKeyName {
  Word Key;
  const char16_t* Name;
};
constexpr TKeyName kKeyNames[] = {
    {VK_BACK, u"BkSp"},  {VK_TAB, u"Tab"},     {VK_RETURN, u"Enter"}, {VK_ESCAPE, u"Esc"},
    {VK_SPACE, u"Space"}, {VK_PRIOR, u"PgUp"}, {VK_NEXT, u"PgDn"},    {VK_END, u"End"},
    {VK_HOME, u"Home"},  {VK_LEFT, u"Left"},   {VK_UP, u"Up"},        {VK_RIGHT, u"Right"},
    {VK_DOWN, u"Down"},  {VK_INSERT, u"Ins"},  {VK_DELETE, u"Del"},
};

String KeyName(Word key) {
  for (const TKeyName& k : kKeyNames)
    if (k.Key == key) return k.Name;
  if (key >= VK_F1 && key <= VK_F12) return u"F" + IntToStr(key - VK_F1 + 1);
  if ((key >= u'0' && key <= u'9') || (key >= u'A' && key <= u'Z')) return String(static_cast<WideChar>(key));
  for (const TOemKey& k : kOemKeys)
    if (k.Key == key) return String(k.Plain);
  return String();
}

Word KeyFromName(const String& name) {
  for (const TKeyName& k : kKeyNames)
    if (SameText(name, k.Name)) return k.Key;
  for (Word f = VK_F1; f <= VK_F12; ++f)
    if (SameText(name, u"F" + IntToStr(f - VK_F1 + 1))) return f;
  if (name.Length() == 1) {
    WideChar c = UpCase(name[1]);
    if ((c >= u'0' && c <= u'9') || (c >= u'A' && c <= u'Z')) return c;
    for (const TOemKey& k : kOemKeys)
      if (k.Plain == c) return k.Key;
  }
  return 0;
}

}  // namespace

void SetKeyDown(Word key, bool down) {
  if (key < 256) KeysDown()[key] = down;
}

void ResetKeyboardState() { KeysDown().fill(false); }

int16_t GetKeyState(int key) {
  if (key < 0 || key > 255) return 0;
  return IsDown(static_cast<Word>(key)) ? static_cast<int16_t>(-32768) : static_cast<int16_t>(0);
}

TShiftState KeyboardStateToShiftState() {
  TShiftState s;
  if (IsDown(VK_SHIFT)) s << ssShift;
  if (IsDown(VK_CONTROL)) s << ssCtrl;
  if (IsDown(VK_MENU)) s << ssAlt;
  if (IsDown(VK_LBUTTON)) s << ssLeft;
  if (IsDown(VK_RBUTTON)) s << ssRight;
  if (IsDown(VK_MBUTTON)) s << ssMiddle;
  return s;
}

WPARAM ShiftStateToMouseKeys(TShiftState shift) {
  WPARAM keys = 0;
  if (shift.Contains(ssLeft)) keys |= MK_LBUTTON;
  if (shift.Contains(ssRight)) keys |= MK_RBUTTON;
  if (shift.Contains(ssMiddle)) keys |= MK_MBUTTON;
  if (shift.Contains(ssShift)) keys |= MK_SHIFT;
  if (shift.Contains(ssCtrl)) keys |= MK_CONTROL;
  return keys;
}

TShiftState MouseKeysToShiftState(WPARAM keys) {
  TShiftState s;
  if (keys & MK_LBUTTON) s << ssLeft;
  if (keys & MK_RBUTTON) s << ssRight;
  if (keys & MK_MBUTTON) s << ssMiddle;
  if (keys & MK_SHIFT) s << ssShift;
  if (keys & MK_CONTROL) s << ssCtrl;
  // Alt is not among the mouse flags; Windows code reads it from the keyboard.
  if (IsDown(VK_MENU)) s << ssAlt;
  return s;
}

LPARAM KeyDataFor(TShiftState shift) { return shift.Contains(ssAlt) ? (LPARAM{1} << 29) | 1 : 1; }

TShiftState KeyDataToShiftState(LPARAM keyData) {
  TShiftState s;
  if (IsDown(VK_SHIFT)) s << ssShift;
  if (IsDown(VK_CONTROL)) s << ssCtrl;
  if (keyData & (LPARAM{1} << 29)) s << ssAlt;
  return s;
}

WideChar KeyToChar(Word key, TShiftState shift) {
  bool ctrl = shift.Contains(ssCtrl), alt = shift.Contains(ssAlt), sh = shift.Contains(ssShift);
  if (ctrl && alt) return 0;
  if (key >= u'A' && key <= u'Z') {
    if (ctrl) return static_cast<WideChar>(key - u'A' + 1);
    return sh ? static_cast<WideChar>(key) : static_cast<WideChar>(key + 32);
  }
  switch (key) {
    case VK_BACK: return ctrl ? WideChar(127) : WideChar(8);
    case VK_TAB: return ctrl ? WideChar(0) : WideChar(9);
    case VK_RETURN: return ctrl ? WideChar(10) : WideChar(13);
    case VK_ESCAPE: return 27;
    case VK_SPACE: return u' ';
    case VK_MULTIPLY: return u'*';
    case VK_ADD: return u'+';
    case VK_SUBTRACT: return u'-';
    case VK_DECIMAL: return u'.';
    case VK_DIVIDE: return u'/';
    default: break;
  }
  if (key >= VK_NUMPAD0 && key <= VK_NUMPAD9) return static_cast<WideChar>(u'0' + (key - VK_NUMPAD0));
  if (ctrl) {
    if (key == VK_OEM_4) return 27;
    if (key == VK_OEM_5) return 28;
    if (key == VK_OEM_6) return 29;
    return 0;
  }
  if (key >= u'0' && key <= u'9') return sh ? kShiftedDigits[key - u'0'] : static_cast<WideChar>(key);
  for (const TOemKey& k : kOemKeys)
    if (k.Key == key) return sh ? k.Shifted : k.Plain;
  return 0;
}

bool CharToKey(WideChar c, Word& key, TShiftState& shift) {
  shift = TShiftState();
  if (c >= u'a' && c <= u'z') { key = static_cast<Word>(c - 32); return true; }
  if (c >= u'A' && c <= u'Z') { key = c; shift << ssShift; return true; }
  if (c >= u'0' && c <= u'9') { key = c; return true; }
  switch (c) {
    case u' ': key = VK_SPACE; return true;
    case 13: key = VK_RETURN; return true;
    case 9: key = VK_TAB; return true;
    case 8: key = VK_BACK; return true;
    case 27: key = VK_ESCAPE; return true;
    default: break;
  }
  for (int d = 0; d < 10; ++d)
    if (kShiftedDigits[d] == c) { key = static_cast<Word>(u'0' + d); shift << ssShift; return true; }
  for (const TOemKey& k : kOemKeys) {
    if (k.Plain == c) { key = k.Key; return true; }
    if (k.Shifted == c) { key = k.Key; shift << ssShift; return true; }
  }
  return false;
}

TShortCut ShortCut(Word key, TShiftState shift) {
  if (key & 0xFF00) return 0;
  TShortCut sc = key;
  if (shift.Contains(ssShift)) sc |= scShift;
  if (shift.Contains(ssCtrl)) sc |= scCtrl;
  if (shift.Contains(ssAlt)) sc |= scAlt;
  return sc;
}

void ShortCutToKey(TShortCut shortCut, Word& key, TShiftState& shift) {
  key = shortCut & 0xFF;
  shift = TShiftState();
  if (shortCut & scShift) shift << ssShift;
  if (shortCut & scCtrl) shift << ssCtrl;
  if (shortCut & scAlt) shift << ssAlt;
}

TShortCut TextToShortCut(const String& text) {
  String rest = Trim(text);
  TShortCut mods = 0;
  // Modifier prefixes in any order; the key name is what remains.
  for (bool found = true; found;) {
    found = false;
    struct { const char16_t* Prefix; TShortCut Flag; } const prefixes[] = {
        {u"Shift+", scShift}, {u"Ctrl+", scCtrl}, {u"Alt+", scAlt}};
    for (auto& p : prefixes) {
      String prefix(p.Prefix);
      if (rest.Length() > prefix.Length() && SameText(rest.SubString(1, prefix.Length()), prefix)) {
        mods |= p.Flag;
        rest = rest.SubString(prefix.Length() + 1, rest.Length());
        found = true;
      }
    }
  }
  Word key = KeyFromName(rest);
  return key ? static_cast<TShortCut>(key | mods) : TShortCut(0);
}

String ShortCutToText(TShortCut shortCut) {
  String name = KeyName(shortCut & 0xFF);
  if (name.IsEmpty()) return String();
  String prefix;
  if (shortCut & scShift) prefix += u"Shift+";
  if (shortCut & scCtrl) prefix += u"Ctrl+";
  if (shortCut & scAlt) prefix += u"Alt+";
  return prefix + name;
}

// Edit masks: "mask;save literals;blank", as "99.99.9999;1;_".
//
// Mask characters take one character of the value each: 0 and 9 digits,
// # a digit or sign, L and l letters, A and a letters or digits, C and c
// anything. "\" makes the next character a literal; ">" and "<" switch to
// upper and lower case, "<>" back to as typed. Everything else is a
// literal, copied into the text.
#pragma once

#include "platform/rtl/ustring.h"

// Lays `value` out by the mask. A value that already holds the literals
// (saved with the text) keeps them; one without gets them inserted.
// Positions the value does not fill show the blank character.
String FormatMaskText(const String& mask, const String& value);

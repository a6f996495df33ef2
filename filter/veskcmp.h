// Smart compare: a similarity measure on short texts by shared character
// grams, the client twin of the server package ZE$G$CMP (PREP, NUM,
// INTEXT) that the filter language calls in a "Smart compare" condition.
//
// The compare alphabet is the digits, "a" to "z" and the lower-case
// Cyrillic letters with "ё"; every other character separates words.
// Texts are compared as UTF-16 code units.
#pragma once

#include "platform/rtl/ustring.h"

class TStrings;
class TOraSession;

// Lower case, separators squeezed to single blanks (none at either end),
// then each stop word (when given) removed where it stands as a whole word,
// with the blank behind it.
String VeskCmpPrep(const String& text, TStrings* stopWords = nullptr);

// The ASCII digits of text, in order.
String VeskCmpNum(const String& text);

// Similarity from 0 to 1, symmetric: the share of grams of 3, 2 and 1
// characters of each text found anywhere in the other (grams of a size
// only when the shorter text is longer than the size less one).
double VeskCmpValue(const String& a, const String& b);

// Share from 0 to 1 of the grams of pattern found in text; zero when
// number is given and does not stand among the digits of text.
double VeskCmpIn(const String& text, const String& pattern, const String& number);

// Makes PREP(text), NUM(text) and INTEXT(text, pattern[, number]) of the
// similarity package callable in the session's SQL (package-qualified
// calls such as "ZE$G$CMP.PREP(x)" reach them). The session must be
// connected; an engine that has the package itself does not need this.
void RegisterSimilarityFunctions(TOraSession* session);

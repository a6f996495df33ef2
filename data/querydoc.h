// Query documents and property lists: a query's whole definition (its
// statements, the properties of composition and guard, its summaries) as
// text that leaves the program and comes back.
//
// The query document is the INI-like text the query editor saves, one
// section per part under a name of the caller's choosing:
//
//   [Goods.SQL]
//   SELECT * FROM GOODS
//
//   [Goods.Props]
//   VeskTableLive=GOODS
//   VeskKeyFields=ID
//   VeskMode=1
//
// Statement sections (SQL, SQLInsert, SQLUpdate, SQLDelete, SQLLock,
// SQLRefresh, SQLPrepare, VeskSQL1) are written only when they hold a line
// that is not blank, Props always, XTT (the summaries' text) when there is
// one. It is read through TMemIniFile, so what that reader forgives or
// drops holds here too, statements included: lines are trimmed, blank
// lines and lines starting with ";" vanish, "a = b" comes back as "a=b",
// and a line "[...]" opens a section wherever it stands.
//
// A short key (VeskTableLive, VeskFilterSYS...) is written on one line, its
// line breaks as blanks.
//
// The property list is the same content as name=value lines with short
// keys ("SQ.SQL", "SQ.STbl", "SQ.SMode"...), long texts split over
// numbered keys by SetParamSQL; a grid's design stream and the published
// PropText carry it.
//
// All of them reach the dataset by property name, so they serve any member
// of the family; on a plain dataset the properties it lacks read as empty
// and ignore writes. Readers close an open dataset, apply everything, fall
// back on "SELECT * FROM DUAL" when no statement is left, and reopen it.
// Nothing is validated: a bad statement shows up on that reopen.
#pragma once

#include "platform/rtl/ustring.h"

class TDataSet;
class TStrings;

// The statement a reader leaves in a dataset whose document has none.
inline constexpr const char16_t* kQueryDocFallbackSQL = u"SELECT * FROM DUAL";

// The document of Query under DocName.
String GetVeskQueryText(TDataSet* Query, const String& DocName);
// Applies the sections of DocName in Text to Query; sections of other
// names and unknown keys are ignored, missing statements are cleared.
void SetVeskQueryText(TDataSet* Query, const String& DocName, const String& Text);

// Writes Query's property list into List. The list is not emptied: the
// numbered lines of each statement are replaced, but short keys of an
// earlier save that are now empty or false stay.
void SaveProps(TDataSet* Query, TStrings* List);
// Applies a property list to Query.
void LoadProps(TDataSet* Query, TStrings* List);
// The property list as one text, and back.
String GetPropText(TDataSet* Query);
void SetPropText(TDataSet* Query, const String& Text);

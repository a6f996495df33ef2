// The two text forms of a query's definition, apart from any dataset: the
// parts they carry, the keys of each form, and the readers and writers of
// the query document and of the property list. data/querydoc.h moves a
// definition between these texts and a dataset.
#pragma once

#include <array>
#include <iterator>

#include "platform/rtl/stringlist.h"

namespace QueryText {

// Both forms carry the same parts under keys of their own.
enum TForm { qfDocument, qfList };

struct TStatementPart {
  const char16_t* Key[2];  // document section suffix, list key
  const char16_t* Property;
};

// In the order of writing.
inline constexpr TStatementPart kStatements[] = {
    {{u"SQL", u"SQ.SQL"}, u"SQL"},
    {{u"SQLInsert", u"SQ.SQLI"}, u"SQLInsert"},
    {{u"SQLUpdate", u"SQ.SQLU"}, u"SQLUpdate"},
    {{u"SQLDelete", u"SQ.SQLD"}, u"SQLDelete"},
    {{u"SQLLock", u"SQ.SQLL"}, u"SQLLock"},
    {{u"SQLRefresh", u"SQ.SQLR"}, u"SQLRefresh"},
    {{u"SQLPrepare", u"SQ.SQLP"}, u"SQLPrepare"},
    {{u"VeskSQL1", u"SQ.SSQL"}, u"VeskSQL1"},
};
inline constexpr int kStatementCount = static_cast<int>(std::size(kStatements));

enum TTextPart { tpTableLive, tpFilterSYS, tpGroupField, tpKeyFields };
inline constexpr int kTextCount = 4;

struct TTextKey {
  const char16_t* Key[2];
  const char16_t* Property;
};

inline constexpr TTextKey kTexts[kTextCount] = {
    {{u"VeskTableLive", u"SQ.STbl"}, u"VeskTableLive"},
    {{u"VeskFilterSYS", u"SQ.SFilt"}, u"VeskFilterSYS"},
    {{u"VeskGroupField", u"SQ.SSort"}, u"VeskGroupField"},
    {{u"VeskKeyFields", u"SQ.SKeys"}, u"VeskKeyFields"},
};

// The order in which each form writes and applies its text keys: the list
// takes the key fields before the conditions.
inline constexpr TTextPart kTextOrder[2][kTextCount] = {
    {tpTableLive, tpFilterSYS, tpGroupField, tpKeyFields},
    {tpTableLive, tpKeyFields, tpFilterSYS, tpGroupField},
};

// A switch is a Boolean property or, with Option, one element of the
// RefreshOptions set.
struct TSwitchKey {
  const char16_t* Key[2];
  const char16_t* Property;
  const char16_t* Option = nullptr;
};

inline constexpr const char16_t* kRefreshOptions = u"RefreshOptions";

// In the document's order of writing and applying.
inline constexpr TSwitchKey kSwitches[] = {
    {{u"VeskMode", u"SQ.SMode"}, u"VeskMode"},
    {{u"ObjectView", u"SQ.ObjV"}, u"ObjectView"},
    {{u"RefreshAfterInsert", u"SQ.ROAI"}, kRefreshOptions, u"roAfterInsert"},
    {{u"RefreshAfterUpdate", u"SQ.ROAU"}, kRefreshOptions, u"roAfterUpdate"},
    {{u"RefreshBeforeEdit", u"SQ.ROBE"}, kRefreshOptions, u"roBeforeEdit"},
    {{u"VeskEditRefreshNotNeed", u"SQ.SERN"}, u"VeskEditRefreshNotNeed"},
    {{u"DMLRefresh", u"SQ.DMLR"}, u"DMLRefresh"},
    {{u"VeskModeNotAbort", u"SQ.SMNA"}, u"VeskModeNotAbort"},
    {{u"VeskModePostAuto", u"SQ.SMPA"}, u"VeskModePostAuto"},
    {{u"VeskParamsNotCPL", u"SQ.SCPL"}, u"VeskParamsNotCPLAfterInsert"},
    {{u"XTTShowSummary", u"SQ.XSS"}, u"XTTShowSummary"},
    {{u"VeskSimpleRefresh", u"SQ.SSR"}, u"VeskSimpleRefresh"},
    {{u"VeskMasterRefresh", u"SQ.SMR"}, u"VeskMasterRefresh"},
    {{u"ShowDBMSOutput", u"SQ.SDO"}, u"ShowDBMSOutput"},
};
inline constexpr int kSwitchCount = static_cast<int>(std::size(kSwitches));

// The order in which each form writes and applies its switches: the list
// takes XTTShowSummary last.
inline constexpr int kSwitchOrder[2][kSwitchCount] = {
    {0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13},
    {0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 11, 12, 13, 10},
};

// Everything a document or a list holds.
struct TDefinition {
  std::array<TStringList, kStatementCount> Statements;
  std::array<String, kTextCount> Texts;
  std::array<bool, kSwitchCount> Switches{};
  String Summary;  // the summaries' text form
};

// The document: statement sections with a line that is not blank, the
// Props section always, the XTT section when there is a summary text.
String WriteDocument(const TDefinition& Def, const String& DocName);
// Reads the sections of DocName through TMemIniFile; anything else in the
// text is ignored. A switch is on only for the value "1".
void ReadDocument(const String& Text, const String& DocName, TDefinition& Def);

// Writes the list's keys into List without emptying it first.
void WriteList(TDefinition& Def, TStrings* List);
void ReadList(TStrings* List, TDefinition& Def);

}  // namespace QueryText

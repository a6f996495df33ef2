// The kit's side of the dataset contract: the enumerations, event types and
// command property names that every member of the dataset family shares.
//
// Grids, the filter form and the free functions hold a plain TDataSet and
// reach a family member's extras through the by-name protocol of typinfo.h:
// a dataset that lacks a property reads as the default and ignores writes.
// Commands go the same way, as writes to write-only properties named below.
#pragma once

#include "platform/db/dataset.h"
#include "platform/rtl/events.h"
#include "platform/rtl/typinfo.h"
#include "platform/rtl/variant.h"

// The guard state held in VeskCom: what the caller has declared it is about
// to do to the record. The numbers travel through streams and the protocol.
enum TVeskState {
  dsgInactive,  // no guarded operation under way
  dsgInsert,
  dsgDelete,
  dsgEdit,
  dsgPost,
  dsgCancel,
  dsgFilter,
  dsgOldValue,
  dsgCurValue
};
KELMAR_ENUM(TVeskState, u"dsgInactive", u"dsgInsert", u"dsgDelete", u"dsgEdit", u"dsgPost", u"dsgCancel",
            u"dsgFilter", u"dsgOldValue", u"dsgCurValue");

enum TVeskODACenableIntegers { odacEIdefault, odacEIEnable, odacEIDisable };
KELMAR_ENUM(TVeskODACenableIntegers, u"odacEIdefault", u"odacEIEnable", u"odacEIDisable");

// The server-side aggregate of sgCFunc.
enum TVeskFunc { vfSum, vfMin, vfMax, vfAvg };
KELMAR_ENUM(TVeskFunc, u"vfSum", u"vfMin", u"vfMax", u"vfAvg");

// What VeskSQLChanged reports as changed.
enum : int { vscTableLive = 0, vscGroupField = 1, vscFilter = 2, vscFilterSYS = 3, vscSQL1 = 4 };

// ---- Event types ------------------------------------------------------------

using TMyEvent2 = TEvent<void()>;
using TLogEvent = TEvent<void(TObject* src, const String& Property, const String& Value)>;
// Options arrive as a code: 1 for case-insensitive plus 10 for partial key.
using TVESKLocateEvent = TEvent<bool(const String& KeyFields, const Variant& KeyValues, int Options)>;
using TVESKLookupEvent = TEvent<Variant(const String& KeyFields, const Variant& KeyValues, const String& ResultFields)>;
using TVESKReadOnlyMode = TEvent<bool(TObject* Sender)>;
using TVeskSQLChangedEvent = TEvent<void(TObject* Sender, int What)>;

// The option code handed to an OnVESKLocateEvent handler.
inline int VeskLocateOptionsCode(TLocateOptions options) {
  return (options.Contains(loCaseInsensitive) ? 1 : 0) + (options.Contains(loPartialKey) ? 10 : 0);
}

// ---- Command properties (write-only; the value is the argument) ---------------

inline constexpr const char16_t* kFilterCmdShow = u"FilterCmdShow";        // text: field name
inline constexpr const char16_t* kFilterCmdSetExpr = u"FilterCmdSetExpr";  // text: "Field=Expression"
inline constexpr const char16_t* kFilterCmdClear = u"FilterCmdClear";      // bool: keep
inline constexpr const char16_t* kSearchCmdFirst = u"SearchCmdFirst";      // int: field index
inline constexpr const char16_t* kSearchCmdNext = u"SearchCmdNext";        // int: field index
inline constexpr const char16_t* kDefValCmdSet = u"DefValCmdSet";          // int: field index
inline constexpr const char16_t* kDefValCmdSetCurr = u"DefValCmdSetCurr";  // int: field index
inline constexpr const char16_t* kDefValCmdClear = u"DefValCmdClear";      // int, ignored
inline constexpr const char16_t* kPrevRecCmdCopy = u"PrevRecCmdCopy";      // int: field index

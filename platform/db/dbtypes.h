// The vocabulary of the data framework: dataset states, field types and
// kinds, option sets, bookmarks and the exceptions of the data layer.
// Numeric values follow the historical framework; several travel through
// published properties and design streams.
#pragma once

#include <compare>
#include <cstdint>

#include "platform/rtl/exceptions.h"
#include "platform/rtl/sets.h"
#include "platform/rtl/typinfo.h"

enum TDataSetState {
  dsInactive, dsBrowse, dsEdit, dsInsert, dsSetKey, dsCalcFields, dsFilter, dsNewValue, dsOldValue,
  dsCurValue, dsBlockRead, dsInternalCalc, dsOpening
};
KELMAR_ENUM(TDataSetState, u"dsInactive", u"dsBrowse", u"dsEdit", u"dsInsert", u"dsSetKey", u"dsCalcFields",
            u"dsFilter", u"dsNewValue", u"dsOldValue", u"dsCurValue", u"dsBlockRead", u"dsInternalCalc",
            u"dsOpening");

enum TFieldType {
  ftUnknown, ftString, ftSmallint, ftInteger, ftWord, ftBoolean, ftFloat, ftCurrency, ftBCD, ftDate, ftTime,
  ftDateTime, ftBytes, ftVarBytes, ftAutoInc, ftBlob, ftMemo, ftGraphic, ftFmtMemo, ftParadoxOle, ftDBaseOle,
  ftTypedBinary, ftCursor, ftFixedChar, ftWideString, ftLargeint, ftADT, ftArray, ftReference, ftDataSet,
  ftOraBlob, ftOraClob, ftVariant, ftInterface, ftIDispatch, ftGuid, ftTimeStamp, ftFMTBcd, ftFixedWideChar,
  ftWideMemo
};
KELMAR_ENUM(TFieldType, u"ftUnknown", u"ftString", u"ftSmallint", u"ftInteger", u"ftWord", u"ftBoolean",
            u"ftFloat", u"ftCurrency", u"ftBCD", u"ftDate", u"ftTime", u"ftDateTime", u"ftBytes", u"ftVarBytes",
            u"ftAutoInc", u"ftBlob", u"ftMemo", u"ftGraphic", u"ftFmtMemo", u"ftParadoxOle", u"ftDBaseOle",
            u"ftTypedBinary", u"ftCursor", u"ftFixedChar", u"ftWideString", u"ftLargeint", u"ftADT", u"ftArray",
            u"ftReference", u"ftDataSet", u"ftOraBlob", u"ftOraClob", u"ftVariant", u"ftInterface",
            u"ftIDispatch", u"ftGuid", u"ftTimeStamp", u"ftFMTBcd", u"ftFixedWideChar", u"ftWideMemo");

enum TFieldKind { fkData, fkCalculated, fkLookup, fkInternalCalc, fkAggregate };
KELMAR_ENUM(TFieldKind, u"fkData", u"fkCalculated", u"fkLookup", u"fkInternalCalc", u"fkAggregate");

enum TAlignment { taLeftJustify, taRightJustify, taCenter };
KELMAR_ENUM(TAlignment, u"taLeftJustify", u"taRightJustify", u"taCenter");

enum TLocateOption { loCaseInsensitive, loPartialKey };
KELMAR_ENUM(TLocateOption, u"loCaseInsensitive", u"loPartialKey");
using TLocateOptions = Set<TLocateOption>;

enum TFilterOption { foCaseInsensitive, foNoPartialCompare };
KELMAR_ENUM(TFilterOption, u"foCaseInsensitive", u"foNoPartialCompare");
using TFilterOptions = Set<TFilterOption>;

enum TResyncModeItem { rmExact, rmCenter };
KELMAR_ENUM(TResyncModeItem, u"rmExact", u"rmCenter");
using TResyncMode = Set<TResyncModeItem>;

// What a dataset tells its data sources and links.
enum TDataEvent {
  deFieldChange, deRecordChange, deDataSetChange, deDataSetScroll, deLayoutChange, deUpdateRecord,
  deUpdateState, deCheckBrowseMode, dePropertyChange, deFieldListChange, deFocusControl, deParentScroll,
  deConnectChange, deReconcileError, deDisabledStateChange
};

// A position in a dataset that survives fetching, filtering and edits of
// other records: the record's id in its store. Bookmarks compare by id.
struct TBookmark {
  int64_t Id = -1;
  bool Assigned() const { return Id >= 0; }
  explicit operator bool() const { return Assigned(); }
  friend bool operator==(const TBookmark&, const TBookmark&) = default;
  friend auto operator<=>(const TBookmark&, const TBookmark&) = default;
};

// Failures of the data layer. EOraError carries the engine's Oracle error
// number; its Message starts with "ORA-nnnnn: ".
class EDAError : public EDatabaseError {
 public:
  EDAError(int errorCode, const String& message) : EDatabaseError(message), ErrorCode(errorCode) {}
  String ClassName() const override { return u"EDAError"; }
  int ErrorCode;
};

class EOraError : public EDAError {
 public:
  using EDAError::EDAError;
  String ClassName() const override { return u"EOraError"; }
};

// Raises EDatabaseError with the text, prefixed by the component's name
// when it has one ("Query1: Field 'X' not found").
class TComponent;
[[noreturn]] void DatabaseError(const String& message, const TComponent* component = nullptr);

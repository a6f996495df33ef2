// How a dataset's fields look after it opens: display formats and edit
// masks by the field's format class, the Origin of calculated companion
// fields, labels and widths from comma lists or from the statement itself,
// and a field's format settings kept in a name=value list.
//
// All take a plain TDataSet or TField: any dataset works, the kit's own or
// another. None raises of its own; null arguments do nothing.
#pragma once

#include "platform/rtl/ustring.h"

class TDataSet;
class TField;
class TStrings;

// ---- Format classes ----------------------------------------------------------------

// What a field shows: the class decides its DisplayFormat and EditMask.
enum TFieldFormatClass : int {
  fcNone = 0,      // anything else: no format, no mask
  fcContent = 1,   // an account: "00.00", mask "99\.99" (the dot is configurable)
  fcDate = 2,      // "dd.mm.yyyy", mask "99.99.9999"
  fcTime = 3,      // "hh:nn:ss", mask "99:99:99"
  fcDateTime = 4,  // "dd.mm.yyyy hh:nn:ss", mask "99.99.9999 99:99:99"
};

// The format class of a field. Content needs the active TGridPropCmp with
// UseDotInCont on, an integer or float field, and a name (after any "." and
// at most 30 characters) "DT", "CT", "CONT", "XCONT", "CC1", "CC2" or
// "CONT_...". A TDateField is a date, a TTimeField a time; other date-time
// fields go by the end of the name: "...DATETIME" both, "...TIME" a time,
// the rest a date. 0 for a null field.
TFieldFormatClass FieldFormatClass(const TField* field);
// The class's defaults; empty for class 0 and unknown classes. The content
// class uses the dot character of the active TGridPropCmp.
String FormatClassDisplayFormat(TFieldFormatClass formatClass);
String FormatClassEditMask(TFieldFormatClass formatClass);

// ---- After open ----------------------------------------------------------------------

// For every field, in order:
//  1. a field made at run time (no component name) gets its Origin by
//     FindCompanionField;
//  2. fields of a format class get the class's EditMask (content fields
//     always, others when they have none) and, when they have none, its
//     DisplayFormat (not the date-and-time class);
//  3. a field with an EditMask and no OnSetText gets SetTextByMask;
//  4. an integer or float content field becomes a content field
//     (MakeContentField, see data/contfields.h).
void SetupFieldsAfterOpen(TDataSet* DataSet);

// The field whose text a calculated "CLC<name>" or "CLC_<name>" column
// shows; null for other names or when none is found. Tried in turn: the
// name behind "CLC" (without a leading "_"); when it ends in "T", the same
// without the "T" and a "_" before it; then every integer or float field
// whose name holds a ".", with the "." turned into "_" and with it removed,
// compared with the name, the name + "T" and the name + "_T".
TField* FindCompanionField(TDataSet* DataSet, const String& FieldName);

// The text handler of masked fields: a text with a digit is stored as it
// stands; one without, which is the mask's literals alone, clears the field.
void SetTextByMask(TField* Sender, const String& Text);

// ---- Labels and widths -----------------------------------------------------------------

// A comma list, entry i for field i while both last: a non-empty entry
// becomes the DisplayLabel.
void SetupFieldLabels(TDataSet* DataSet, const String& Text);
// The same for widths: "0" hides the field, any other non-empty entry is
// its DisplayWidth ("10,0,," hides the second field only).
void SetupFieldWidths(TDataSet* DataSet, const String& Text);
// Labels and widths from the lines ".Captions=" and ".Widths=".
void SetDesignFromParams(TDataSet* DataSet, TStrings* List);
// The same from "CaptionsD=" and "WidthsD=" (detail grids).
void SetDesignFromParamsDetail(TDataSet* DataSet, TStrings* List);
// SetDesignFromParams over the statement of an SQL dataset, so that a
// block comment holding ".Captions=Code,Name" and ".Widths=10,0" lines
// titles the columns. Other datasets are left alone.
void SetDesignFromSQL(TDataSet* DataSet);

// ---- A field's format settings in a list ---------------------------------------------

// Writes "DisplayFormat" (empty, thus no line, when it is the class's
// default) and, except for content fields, "EditMask". Nothing for class 0.
void GetVeskFieldParams(TField* Field, TStrings* List);
// Applies a list: "DisplayFormat" (or the class's default for a field made
// at run time), "Origin" (or, by a one-character "TIP", "FIELD_COD" for
// "U", "S", "I", "i", "M" and "FIELD_CONT" for "P"), and "EditMask"
// (content fields always take their own). Nothing for a field with no
// dataset.
void SetVeskFieldParams(TField* Field, TStrings* List);

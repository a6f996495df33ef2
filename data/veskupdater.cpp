#include "data/veskupdater.h"

String MakeAutonomous(const String& Sql) {
  String text = TrimRight(Sql);
  if (text.IsEmpty()) return Sql;
  if (text[text.Length()] != u';') text += u';';
  return u"declare PRAGMA AUTONOMOUS_TRANSACTION;begin " + text + u"commit;end;";
}

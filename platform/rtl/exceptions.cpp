#include "platform/rtl/exceptions.h"

const char* Exception::what() const noexcept {
  try {
    what_ = Message.ToUtf8();
  } catch (...) {
    return "Exception";
  }
  return what_.c_str();
}

void Abort() { throw EAbort(u"Operation aborted"); }

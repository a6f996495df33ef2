// The exception family. Every failure of the platform and of the kit is an
// Exception with a text; ClassName() gives the historical class name, which
// the kit puts into messages. EAbort is the silent one: it unwinds an
// operation and nobody shows it.
#pragma once

#include <exception>
#include <string>

#include "platform/rtl/ustring.h"

class Exception : public std::exception {
 public:
  explicit Exception(const String& message) : Message(message) {}
  ~Exception() override = default;

  virtual String ClassName() const { return u"Exception"; }
  const char* what() const noexcept override;

  String Message;

 private:
  mutable std::string what_;
};

// Declares an exception class with the historical name and parent.
#define KELMAR_EXCEPTION(Name, Parent)                                  \
  class Name : public Parent {                                          \
   public:                                                              \
    using Parent::Parent;                                               \
    String ClassName() const override { return u"" #Name; }            \
  }

KELMAR_EXCEPTION(EAbort, Exception);
KELMAR_EXCEPTION(EConvertError, Exception);
KELMAR_EXCEPTION(EIntError, Exception);
KELMAR_EXCEPTION(ERangeError, EIntError);
KELMAR_EXCEPTION(EMathError, Exception);
KELMAR_EXCEPTION(EZeroDivide, EMathError);
KELMAR_EXCEPTION(EInvalidOp, EMathError);
KELMAR_EXCEPTION(EInvalidCast, Exception);
KELMAR_EXCEPTION(EInvalidOperation, Exception);
KELMAR_EXCEPTION(EArgumentException, Exception);
KELMAR_EXCEPTION(EArgumentOutOfRangeException, EArgumentException);
KELMAR_EXCEPTION(ENotSupportedException, Exception);
KELMAR_EXCEPTION(EVariantError, Exception);
KELMAR_EXCEPTION(EVariantTypeCastError, EVariantError);
KELMAR_EXCEPTION(EVariantInvalidArgError, EVariantError);
KELMAR_EXCEPTION(EVariantBadIndexError, EVariantError);
KELMAR_EXCEPTION(EListError, Exception);
KELMAR_EXCEPTION(EStringListError, Exception);
KELMAR_EXCEPTION(EComponentError, Exception);
KELMAR_EXCEPTION(EPropertyError, Exception);
KELMAR_EXCEPTION(EStreamError, Exception);
KELMAR_EXCEPTION(EReadError, EStreamError);
KELMAR_EXCEPTION(EWriteError, EStreamError);
KELMAR_EXCEPTION(EFCreateError, EStreamError);
KELMAR_EXCEPTION(EFOpenError, EStreamError);
KELMAR_EXCEPTION(EFilerError, EStreamError);
KELMAR_EXCEPTION(EClassNotFound, EFilerError);
KELMAR_EXCEPTION(EInOutError, Exception);
KELMAR_EXCEPTION(EOSError, Exception);
KELMAR_EXCEPTION(EIniFileException, Exception);
KELMAR_EXCEPTION(EDatabaseError, Exception);
KELMAR_EXCEPTION(EEncodingError, Exception);

// Raises the silent exception: the current operation unwinds without a
// message to the user.
[[noreturn]] void Abort();

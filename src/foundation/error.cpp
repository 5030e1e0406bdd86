#include "lxbasic/error.h"

#include <string>

#include "lxbasic/text.h"

namespace lx {

namespace {

const char16_t* catalogueText(int32_t code) {
  switch (code) {
    case -2:
      return u"Loop exit";
    case -1:
      return u"Correct exit";
    case 0:
      return u"";
    case 1:
      return u"Variable declaration block is empty";
    case 2:
      return u"Syntax error";
    case 3:
      return u"Variable \"%@\" not found";
    case 4:
      return u"Internal error";
    case 5:
      return u"Function \"%@\" not found";
    case 6:
      return u"Variable type error";
    case 7:
      return u"IF without THEN";
    case 8:
      return u"END IF without IF";
    case 9:
      return u"ELSE without IF";
    case 10:
      return u"NEXT without FOR";
    case 11:
      return u"Unacceptable symbols in variable name";
    case 12:
      return u"Wrong number of arguments";
    case 13:
      return u"Wrong STEP value";
    case 14:
      return u"Division by zero";
    case 15:
      return u"Assignment of read-only variable";
    case 16:
      return u"WEND without WHILE";
    case 17:
      return u"Redeclaration detected";
    case 18:
      return u"Illigal array initialization";
    case 19:
      return u"Non-positive array length";
    case 20:
      return u"Index out of bounds";
    case 21:
      return u"EXIT FOR without FOR";
    case 22:
      return u"EXIT WHILE without WHILE";
    case 23:
      return u"CONTINUE FOR without FOR";
    case 24:
      return u"CONTINUE WHILE without WHILE";
    case 25:
      return u"Stack overflow";
    case 26:
      return u"Incorrect usage of reserved word";
    case 27:
      return u"Unable to change loop variable";
    case 28:
      return u"Forbidden method call";
    case 29:
      return u"Dimention count must be identical";
    case 30:
      return u"Only the latest dimension could be resized";
    case 31:
      return u"Script execution time is out";
    case 32:
      return u"LOOP without DO";
    case 33:
      return u"EXIT DO without DO";
    case 34:
      return u"CONTINUE DO without DO";
    case 35:
      return u"%@ is not supported";
    case 36:
      return u"Out of memory";
    case 37:
      return u"Line is too long";
    default:
      return u"";
  }
}

}  // namespace

UString errorMessage(int32_t code, UStringView fill) {
  UString text = catalogueText(code);
  if (code == kNotSupported && fill.empty()) fill = u"SELECT CASE ... END SELECT statement";
  size_t at = text.find(u"%@");
  if (at != UString::npos) text.replace(at, 2, fill);
  return text;
}

std::shared_ptr<LxError> LxError::make(int32_t code, UStringView line, UStringView fill) {
  return std::make_shared<LxError>(code, errorMessage(code, fill), UString(line), -1);
}

UString LxError::description() const {
  std::string head = "Error #" + std::to_string(code_);
  if (lineNumber_ != -1) head += ", Line #" + std::to_string(lineNumber_);
  head += ": ";
  return fromUtf8(head) + desc_ + u"\nSource: " + line_;
}

Variant LxError::Number() const {
  return Variant::int32(code_);
}
Variant LxError::Description() const {
  return Variant(desc_);
}

std::shared_ptr<const LxError> LxError::snapshot() const {
  std::lock_guard lock(mutex_);
  return std::make_shared<const LxError>(code_, desc_, line_, lineNumber_);
}

void LxError::Clear() {
  std::lock_guard lock(mutex_);
  code_ = 0;
  desc_.clear();
  line_.clear();
  lineNumber_ = -1;
}

void LxError::Raise(const Variant& n) {
  try {
    const int32_t code = intValue(n);
    std::lock_guard lock(mutex_);
    code_ = code;
  } catch (...) {
    // A value without an integer leaves the record as it was.
  }
}

}  // namespace lx

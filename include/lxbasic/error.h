// LxError: the error record of a run, and the script-visible `err` object.
#pragma once

#include <climits>
#include <cstdint>
#include <memory>
#include <mutex>

#include "lxbasic/export.h"
#include "lxbasic/variant.h"

namespace lx {

// The catalogue of codes. Codes 1 to 99 are errors of one statement; an error from inside a
// user procedure arrives with 100 added per call level; codes 0 and below are signals.
enum ErrorCode : int32_t {
  kLoopExit = -2,
  kCorrectExit = -1,
  kNoError = 0,
  kEmptyDeclaration = 1,
  kSyntaxError = 2,
  kVariableNotFound = 3,
  kInternalError = 4,
  kFunctionNotFound = 5,
  kVariableTypeError = 6,
  kIfWithoutThen = 7,
  kEndIfWithoutIf = 8,
  kElseWithoutIf = 9,
  kNextWithoutFor = 10,
  kBadVariableName = 11,
  kWrongArgumentCount = 12,
  kWrongStep = 13,
  kDivisionByZero = 14,
  kReadOnlyAssignment = 15,
  kWendWithoutWhile = 16,
  kRedeclaration = 17,
  kIllegalArrayInit = 18,
  kNonPositiveLength = 19,
  kIndexOutOfBounds = 20,
  kExitForWithoutFor = 21,
  kExitWhileWithoutWhile = 22,
  kContinueForWithoutFor = 23,
  kContinueWhileWithoutWhile = 24,
  kStackOverflow = 25,
  kReservedWord = 26,
  kLoopVariableChange = 27,
  kForbiddenCall = 28,
  kDimensionCount = 29,
  kOnlyLastDimension = 30,
  kTimeout = 31,
  kLoopWithoutDo = 32,
  kExitDoWithoutDo = 33,
  kContinueDoWithoutDo = 34,
  kNotSupported = 35,
  // The script's memory limit was reached (see LxBasicScript::setMemoryLimit).
  kOutOfMemory = 36,
  // A line longer than the engine reads (kMaxLineLength code units).
  kLineTooLong = 37,
};

// The code an error reports one procedure level further out: 100 more, saturating at the
// largest code instead of wrapping round to a negative (success-like) one.
constexpr int32_t codeOneLevelOut(int32_t code) noexcept {
  return code > INT32_MAX - 100 ? INT32_MAX : code + 100;
}

// The message of a catalogue code; "%@" in it (codes 3, 5, 35) is filled with `fill`.
// Codes outside the catalogue have the message "".
LX_API UString errorMessage(int32_t code, UStringView fill = {});

class LX_API LxError final : public Object {
 public:
  LxError(int32_t code, UString desc, UString line, int32_t lineNumber = -1)
      : code_(code), desc_(std::move(desc)), line_(std::move(line)), lineNumber_(lineNumber) {}

  static std::shared_ptr<LxError> errorWithCode(int32_t code, UString desc, UString line) {
    return std::make_shared<LxError>(code, std::move(desc), std::move(line), -1);
  }
  static std::shared_ptr<LxError> errorWithCode(int32_t code, UString desc, UString line,
                                                int32_t lineNumber) {
    return std::make_shared<LxError>(code, std::move(desc), std::move(line), lineNumber);
  }
  // A catalogue error: the message of `code` (filled with `fill`) and the given line text.
  static std::shared_ptr<LxError> make(int32_t code, UStringView line = {}, UStringView fill = {});

  // A copy that nothing changes any more: what a host reads while a script may still call
  // Clear or Raise on the record it holds as `err`.
  std::shared_ptr<const LxError> snapshot() const;

  int32_t code() const noexcept { return code_; }
  const UString& desc() const noexcept { return desc_; }
  const UString& line() const noexcept { return line_; }
  int32_t lineNumber() const noexcept { return lineNumber_; }

  // "Error #%d: %@\nSource: %@", or with lineNumber "Error #%d, Line #%d: %@\nSource: %@".
  UString description() const override;
  std::string className() const override { return "LxError"; }

  // The operations scripts call on `err` (registered under these names).
  Variant Number() const;
  Variant Description() const;
  void Clear();
  void Raise(const Variant& n);

 private:
  int32_t code_;
  UString desc_;
  UString line_;
  int32_t lineNumber_;
  mutable std::mutex mutex_;  // Clear and Raise against snapshot
};
using ErrorRef = std::shared_ptr<LxError>;

}  // namespace lx

// The engine's exception hierarchy. Script errors are records (LxError), not exceptions;
// exceptions are failures of the kind a platform raises: a value asked for something it
// cannot answer, an index out of range. They pass out of LxBasicScript::runScript.
#pragma once

#include <exception>
#include <stdexcept>
#include <string>

namespace lx {

class Exception : public std::runtime_error {
 public:
  Exception(std::string name, const std::string& reason)
      : std::runtime_error(reason), name_(std::move(name)) {}
  // A short name of the kind of failure, e.g. "UnrecognizedSelector".
  const std::string& name() const noexcept { return name_; }

 private:
  std::string name_;
};

// An object was sent an operation it does not implement (a value that cannot answer
// intValue, the ECHO statement, WeekdayName's name request).
class UnrecognizedSelectorException : public Exception {
 public:
  explicit UnrecognizedSelectorException(const std::string& reason)
      : Exception("UnrecognizedSelector", reason) {}
};

// An index or range outside a string or list.
class RangeException : public Exception {
 public:
  explicit RangeException(const std::string& reason) : Exception("RangeError", reason) {}
};

// An argument that an operation cannot work with.
class InvalidArgumentException : public Exception {
 public:
  explicit InvalidArgumentException(const std::string& reason)
      : Exception("InvalidArgument", reason) {}
};

// run or runScript on a script object whose run is still active; the active run goes on.
class ScriptBusyException : public Exception {
 public:
  ScriptBusyException() : Exception("ScriptBusy", "the script is already running") {}
};

// "Name: reason" for the engine's exceptions, the reason for any other std::exception; for
// reporting what LxBasicScript::lastException() or a runScript() caller received.
inline std::string describeException(const std::exception_ptr& thrown) {
  if (!thrown) return std::string();
  try {
    std::rethrow_exception(thrown);
  } catch (const Exception& e) {
    return e.name() + ": " + e.what();
  } catch (const std::exception& e) {
    return e.what();
  } catch (...) {
    return "an exception of unknown type";
  }
}

}  // namespace lx

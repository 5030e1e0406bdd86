// The engine's exception hierarchy. Script errors are records (LxError), not exceptions;
// exceptions are failures of the kind a platform raises: a value asked for something it
// cannot answer, an index out of range. They pass out of LxBasicScript::runScript.
#pragma once

#include <exception>
#include <stdexcept>
#include <string>

#include "lxbasic/export.h"

namespace lx {

class LX_API Exception : public std::runtime_error {
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
class LX_API UnrecognizedSelectorException : public Exception {
 public:
  explicit UnrecognizedSelectorException(const std::string& reason)
      : Exception("UnrecognizedSelector", reason) {}
};

// An index or range outside a string or list.
class LX_API RangeException : public Exception {
 public:
  explicit RangeException(const std::string& reason) : Exception("RangeError", reason) {}
};

// An argument that an operation cannot work with.
class LX_API InvalidArgumentException : public Exception {
 public:
  explicit InvalidArgumentException(const std::string& reason)
      : Exception("InvalidArgument", reason) {}
};

// A value was read as a kind it is not, e.g. Variant::string() on a number. The checked
// accessors of Variant throw it; Variant::as<T>() answers std::nullopt instead.
class LX_API TypeMismatchException : public Exception {
 public:
  explicit TypeMismatchException(const std::string& reason) : Exception("TypeMismatch", reason) {}
};

// A host registration that could only go wrong later: a selector whose colons do not match
// the C++ parameters, a selector registered twice. Thrown by ClassBuilder at registration.
class LX_API BindingException : public Exception {
 public:
  explicit BindingException(const std::string& reason) : Exception("Binding", reason) {}
};

// run or runScript on a script object whose run is still active; the active run goes on.
class LX_API ScriptBusyException : public Exception {
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

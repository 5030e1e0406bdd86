// The frame of one active body: the host's script, a procedure call, or the lines Eval runs
// in the body that called it. It holds the body's own state (its variables and host objects,
// its open conditionals and loops, its temporaries, the current line, the ON ERROR state and
// the error record) and is the whole of what the compiled form may ask of the engine: this
// header is the contract between the executor of compiled lines and the interpreter that
// owns the frames. The interpreter's script object is the only kind of frame; the operations
// declared at the end are carried out by it (see interpreter/frame_operations.cpp).
#pragma once

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <mutex>
#include <span>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "execution/epoch.h"
#include "execution/loop_stack.h"
#include "lxbasic/bridge.h"
#include "lxbasic/error.h"
#include "lxbasic/string_list.h"
#include "lxbasic/value.h"
#include "lxbasic/variant.h"

namespace lx {

class LxBasicSub;
struct LoopJump;  // syntax/statement_parts.h
struct MethodInfo;

class Frame {
 public:
  Frame(const Frame&) = delete;
  Frame& operator=(const Frame&) = delete;

  // ---- the error record
  ErrorRef error() const;
  // After a stop only the stop's own record may be set again (with the line it ended on).
  void setError(ErrorRef e);
  // True when an error record is set; cheap enough for every line.
  bool hasError() const noexcept { return errorSet_.load(std::memory_order_acquire); }
  int32_t errorCode() const;  // 0 when none is set

  // ---- where the frame sits in its tree
  // The host's script; a procedure's frame is not one.
  bool isRoot() const noexcept { return root_ == this; }
  // The host's script of the tree, one hop away: an assignment inside a procedure falls back
  // to its variables.
  Frame& root() const noexcept { return *root_; }

  // ---- variables and host objects
  std::unordered_map<UString, ValueRef>& getVars() noexcept { return _vars; }
  const std::vector<ObjectRef>& getObjs() const noexcept { return _objs; }
  // Epochs of the variable table's names and of the host-object list (see epoch.h): what was
  // found by name holds while they are unchanged.
  uint64_t varsEpoch() const noexcept { return varsEpoch_; }
  // Changes only when a name is added to the table or leaves it (or constants are shown): a
  // name found in neither stays absent while it is unchanged.
  uint64_t namesEpoch() const noexcept { return namesEpoch_; }
  uint64_t objsEpoch() const noexcept { return objsEpoch_; }
  // In a procedure's frame: the upper-case names each call binds (parameters, the result's
  // names, "__func__"), one list shared by every frame of a procedure, and this frame's table
  // entries for them, which stay where they are while the frame lives. nullptr elsewhere.
  const std::vector<UString>* boundNames() const noexcept { return boundNames_; }
  const ValueRef& boundEntry(size_t i) const noexcept { return *boundEntries_[i]; }
  // Changes whenever a loop opens or closes.
  uint64_t loopsVersion() const noexcept { return _loops.version(); }

  // ---- carried out by the interpreter
  // The slot an upper-case name has: the frame's own variable, or else a predefined constant
  // it can see; a null reference when neither.
  const ValueRef& variableSlot(const UString& key) const;
  ValueRef getValueForVar(UStringView name) const;
  // True when `slot` is the variable of an open FOR loop (assignments to it are refused).
  bool isLoopVariable(const LxValue* slot) const;
  // The first host object with a method of that name and argument count: its index in
  // getObjs() (-1: none), the method in *method.
  int32_t findSel(const MethodInfo** method, UStringView name, int32_t n) const;
  // Calls a host method or built-in, counted against the tree's call-depth limit; false after
  // error 25. *r holds the answer or the argument-mismatch marker.
  bool sendCounted(Object& target, const MethodInfo& method, std::span<const Variant> args,
                   CallResult* r);
  // The operator on two values; may set error 14 (division by zero) and still answer.
  Variant operate(char16_t op, const Variant& a, const Variant& b);
  // An EXIT or CONTINUE statement whose words were read when it was compiled.
  void loopJump(const LoopJump& jump);
  // The procedure of that name (any letter case), or nullptr; the table's epoch changes
  // whenever a procedure is added.
  std::shared_ptr<LxBasicSub> getSubByName(UStringView name) const;
  uint64_t proceduresEpoch() const noexcept { return *proceduresEpoch_; }
  // One call of a procedure: its result, or argumentMismatch when the argument count is
  // wrong; a failure of the body is stored in *error and answers Empty.
  CallResult callProcedure(LxBasicSub& sub, std::span<const Variant> args, ErrorRef* error);

 protected:
  // A frame made for a tree whose host's script is `root` (itself, for the root).
  explicit Frame(Frame* root) noexcept : root_(root ? root : this) {}
  ~Frame();

  Frame* root_;
  LxBasicStringList _script;  // the body: its text and, per line, where it came from
  std::unordered_map<UString, ValueRef> _vars;
  std::vector<ObjectRef> _objs;
  std::vector<char> _ifs;  // truth of each open block IF, innermost last
  LoopStack _loops;
  std::vector<UString> _tmps;
  int32_t _curline = 0;
  int32_t _ignore_error = 0;
  uint64_t varsEpoch_ = nextBindingEpoch();
  uint64_t namesEpoch_ = varsEpoch_;
  uint64_t objsEpoch_ = nextBindingEpoch();
  const std::vector<UString>* boundNames_ = nullptr;
  ValueRef* const* boundEntries_ = nullptr;
  // The procedure table's epoch, where the table keeps it (the tree's table replaces it only
  // between runs, and then every frame is made anew or pointed at the new one).
  const uint64_t* proceduresEpoch_ = &kNoProcedures;
  static constexpr uint64_t kNoProcedures = 0;

  mutable std::mutex errorMutex_;
  ErrorRef _error;
  std::atomic<bool> errorSet_{false};
  bool stopSticky_ = false;  // guarded by errorMutex_: a stop's record stands
};

// ---- rules of the language that both evaluators apply to values (carried out by the
// interpreter)

// The error a caller reports for a procedure whose body failed: the inner code one level out
// (plus 100, saturating), the inner message and line text.
ErrorRef procedureFailure(const LxError& inner);

// RETAIN, RELEASE and DEALLOC (given upper-cased) are never called from scripts.
inline bool isForbiddenMethodName(const UString& upper) {
  return upper == u"RETAIN" || upper == u"RELEASE" || upper == u"DEALLOC";
}

// Orders two values: -1, 0 or 1 (expressions.cpp); throws for an array against a non-array.
int32_t compareValues(const Variant& a, const Variant& b);

// The variable slot reached by a list of indices (each read as a 32-bit integer from its
// text), or nullptr; a slot that holds no array answers a new Empty slot.
ValueRef getElement(std::span<const Variant> indices, const LxValue* slot);
// Item i of a list value, or nullptr when the value is no list or i lies outside it.
inline const Variant* itemAt(const Variant& list, int32_t i) noexcept {
  if (!list.isArray()) return nullptr;
  const auto& items = list.arrayUnchecked()->items;
  if (i < 0 || static_cast<size_t>(i) >= items.size()) return nullptr;
  return &items[static_cast<size_t>(i)];
}

}  // namespace lx

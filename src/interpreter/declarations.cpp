// DIM, CONST and REDIM.
#include "foundation/memory_budget.h"
#include "foundation/scanning.h"
#include "interpreter/script_core.h"
#include "lxbasic/text.h"

namespace lx {

namespace {

// The innermost lists of an array of `depth` levels.
void innermostLists(const ArrayRef& list, size_t depth, std::vector<Array*>& out) {
  if (depth <= 1) {
    out.push_back(list.get());
    return;
  }
  for (const Variant& item : list->items) {
    if (item.isArray()) innermostLists(item.array(), depth - 1, out);
  }
}

// The element counts (bound + 1, wrapping like the 32-bit sums they are) of a bound list such
// as "2, n + 1"; false after an error, which is set on the script with `line`.
bool readBounds(ScriptCore& script, UString bounds, const UString& line,
                std::vector<int32_t>& lengths) {
  while (!bounds.empty()) {
    UString item = getTokenFrom(bounds, u",");
    UString name = script.parseLine(item);
    ValueRef v = name.empty() ? nullptr : script.getValue(name);
    if (!v && script.hasError()) return false;
    if (!v || v->type() != ValueKind::Number) {
      script.setError(LxError::make(kVariableTypeError, line));
      return false;
    }
    int32_t bound = v->data().number().toInt32();
    if (bound < 0) {
      script.setError(LxError::make(kNonPositiveLength, line));
      return false;
    }
    lengths.push_back(static_cast<int32_t>(static_cast<uint32_t>(bound) + 1u));
  }
  return true;
}

}  // namespace

void ScriptCore::parseVar(const UString& line, bool constant) {
  UString rest = line;
  getTokenFrom(rest, u" ");
  rest = trim(rest);
  if (rest.empty()) {
    setError(LxError::make(kEmptyDeclaration, line));
    return;
  }
  auto declared = [&](const UString& name) {
    if (getValueForVar(name) || getSubByName(name)) {
      setError(LxError::make(kRedeclaration, line));
      return true;
    }
    return false;
  };

  while (!rest.empty()) {
    UString decl = trim(getTokenFrom(rest, u","));
    int32_t eq = posWithNeedle(u"=", decl);
    if (eq == -1) {
      if (constant) {
        setError(LxError::make(kSyntaxError, line));
        return;
      }
      UString upper = upperCase(decl);
      size_t open = upper.find(u'(');
      size_t close = upper.rfind(u')');
      if ((open == UString::npos) != (close == UString::npos)) {
        setError(LxError::make(kSyntaxError, line));
        return;
      }
      if (open == UString::npos) {
        if (declared(upper)) return;
        if (!addVarWithName(upper, Variant())) return;
        continue;
      }
      UString name = trim(UStringView(upper).substr(0, open));
      std::vector<int32_t> lengths;
      const size_t inner = close > open ? close - open - 1 : 0;
      if (!readBounds(*this, trim(UStringView(upper).substr(open + 1, inner)), line, lengths)) {
        return;
      }
      int64_t total = 1;
      for (int32_t n : lengths) total *= n, checkArrayElements(total);
      auto array = Array::make();
      for (size_t i = 0; i < lengths.size(); ++i)
        dimArray(*array, lengths[i], i + 1 == lengths.size());
      if (isKeyword(name)) {
        setError(LxError::make(kReservedWord));
        return;
      }
      if (declared(name)) return;
      if (!addVarWithName(name, Variant(array))) return;
      continue;
    }

    const auto at = static_cast<size_t>(eq);
    UString name = trim(UStringView(decl).substr(0, at));
    UString valueText = trim(UStringView(decl).substr(at + 1));
    const bool open = name.find(u'(') != UString::npos;
    const bool close = name.find(u')') != UString::npos;
    if (open != close) {
      setError(LxError::make(kSyntaxError, line));
      return;
    }
    if (open) {
      setError(LxError::make(kIllegalArrayInit, line));
      return;
    }
    if (posWithNeedle(u"=", valueText) != -1) {
      setError(LxError::make(kSyntaxError, line));
      return;
    }
    UString resultName = parseLine(valueText);
    ValueRef value = resultName.empty() ? nullptr : getValue(resultName);
    if (!value && hasError()) return;
    UString upper = upperCase(name);
    if (isKeyword(upper)) {
      setError(LxError::make(kReservedWord));
      return;
    }
    if (declared(upper)) return;
    if (!addVarWithName(upper, value ? value->data() : Variant(), constant)) return;
  }
}

void ScriptCore::parseReDim(const UString& line) {
  UString rest = line;
  getTokenFrom(rest, u" ");
  UString probe = rest;
  const bool preserve = upperCase(getTokenFrom(probe, u" ")) == u"PRESERVE";
  if (preserve) rest = probe;
  while (!rest.empty()) {
    UString item = trim(getTokenFrom(rest, u","));
    size_t open = item.find(u'(');
    size_t close = item.rfind(u')');
    if ((open == UString::npos) != (close == UString::npos)) {
      setError(LxError::make(kSyntaxError, line));
      return;
    }
    if (open == UString::npos) continue;
    ValueRef slot = getValue(UStringView(item).substr(0, open));
    if (!slot && hasError()) return;

    std::vector<int32_t> lengths;
    UString bounds = close > open ? item.substr(open + 1, close - open - 1) : UString();
    if (!readBounds(*this, std::move(bounds), line, lengths)) return;

    // The existing shape, read along first elements.
    std::vector<size_t> shape;
    ArrayRef top = slot && slot->type() == ValueKind::Array ? slot->data().array() : nullptr;
    for (ArrayRef level = top; level;) {
      shape.push_back(level->items.size());
      level =
          !level->items.empty() && level->items[0].isArray() ? level->items[0].array() : nullptr;
    }
    if (shape.size() != lengths.size()) {
      setError(LxError::make(kDimensionCount, line));
      return;
    }
    for (size_t d = 0; d + 1 < lengths.size(); ++d) {
      if (static_cast<int64_t>(shape[d]) != lengths[d]) {
        setError(LxError::make(kOnlyLastDimension, line));
        return;
      }
    }
    // No bounds for a value that is no array: no dimensions, no lists to refill.
    if (lengths.empty()) continue;
    const int32_t last = lengths.back();
    if (last < 0) {
      setError(LxError::make(kIllegalArrayInit, line));
      return;
    }
    std::vector<Array*> lists;
    innermostLists(top, lengths.size(), lists);
    checkArrayElements(static_cast<int64_t>(lists.size()) * last);
    for (Array* list : lists) {
      if (!preserve) list->items.clear();
      list->chargeFor(static_cast<size_t>(last));
      if (list->items.size() > static_cast<size_t>(last))
        list->items.resize(static_cast<size_t>(last));
      while (list->items.size() < static_cast<size_t>(last))
        list->items.emplace_back(LxValue::make());
    }
  }
}

}  // namespace lx

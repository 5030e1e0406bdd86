#include "difffuzz/value_text.h"

#include <cctype>
#include <string_view>

#include "lxbasic/error.h"
#include "lxbasic/text.h"

namespace difffuzz {
namespace {

// An array may hold itself through one of its slots; below this depth nothing is printed.
constexpr int kMaxDepth = 6;

const char* numberType(const lx::Number& n) {
  switch (n.type()) {
    case lx::Number::Type::Int32:
      return "i32";
    case lx::Number::Type::Int64:
      return "i64";
    case lx::Number::Type::Boolean:
      return "bool";
    case lx::Number::Type::UInt64:
      return "u64";
    case lx::Number::Type::Double:
      return "double";
  }
  return "?";
}

std::string quoted(const lx::UString& text) {
  return "\"" + lx::toUtf8(text) + "\"";
}

std::string render(const lx::Variant& v, int depth);

// The next place at or after `from` where `prefix` starts, in any letter case.
size_t findPrefix(const std::string& text, std::string_view prefix, size_t from) {
  for (size_t at = from; at + prefix.size() <= text.size(); ++at) {
    bool same = true;
    for (size_t i = 0; i < prefix.size() && same; ++i) {
      same = std::tolower(static_cast<unsigned char>(text[at + i])) == prefix[i];
    }
    if (same) return at;
  }
  return std::string::npos;
}

std::string renderObject(const lx::ObjectRef& object, int depth) {
  if (!object) return "Object(none)";
  if (auto slot = std::dynamic_pointer_cast<lx::LxValue>(object)) {
    return "Slot(" + render(slot->data(), depth + 1) + ")";
  }
  if (auto err = std::dynamic_pointer_cast<lx::LxError>(object)) {
    return "Err(" + std::to_string(err->code()) + ", " + quoted(err->desc()) + ", " +
           quoted(err->line()) + ", " + std::to_string(err->lineNumber()) + ")";
  }
  // Other objects print their class only: the default description holds an address.
  return "Object(" + object->className() + ")";
}

std::string render(const lx::Variant& v, int depth) {
  if (depth > kMaxDepth) return "...";
  switch (v.kind()) {
    case lx::ValueKind::Empty:
      return "Empty";
    case lx::ValueKind::String:
      return "String " + quoted(v.string());
    case lx::ValueKind::Number:
      return std::string("Number(") + numberType(v.number()) + ") " + lx::toUtf8(v.number().text());
    case lx::ValueKind::Date:
      return "Date " + lx::toUtf8(lx::toText(v));
    case lx::ValueKind::Array: {
      std::string text = "Array[";
      const auto& items = v.array()->items;
      for (size_t i = 0; i < items.size(); ++i) {
        if (i) text += ", ";
        text += render(items[i], depth + 1);
      }
      return text + "]";
    }
    case lx::ValueKind::Object:
      return renderObject(v.object(), depth);
  }
  return "?";
}

}  // namespace

std::string renderValue(const lx::Variant& value) {
  return withoutTemporaryNumbers(render(value, 0));
}

std::string renderSlot(const lx::LxValue& slot) {
  std::string text = withoutTemporaryNumbers(render(slot.data(), 0));
  return slot.constant() ? "const " + text : text;
}

std::string withoutTemporaryNumbers(std::string text) {
  static constexpr std::string_view kPrefix = "____var_";
  size_t at = 0;
  while ((at = findPrefix(text, kPrefix, at)) != std::string::npos) {
    size_t digits = at + kPrefix.size();
    size_t end = digits;
    while (end < text.size() && std::isdigit(static_cast<unsigned char>(text[end]))) ++end;
    if (end > digits) text.replace(digits, end - digits, "#");
    at = digits;
  }
  return text;
}

}  // namespace difffuzz

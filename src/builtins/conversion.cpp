// Conversion built-ins: Asc, CBool, CByte, CCur, CDbl, CSng, Chr, CInt, CLng, CStr, Hex, Oct.
//
// Most of them read their argument through its text, so a Number converts as its decimal text
// and the null object (what an Empty script value becomes) as "<null>", which reads 0.
#include <cstdio>

#include "builtins/common.h"
#include "builtins/families.h"
#include "builtins/guard.h"
#include "foundation/day_serial.h"
#include "lxbasic/text.h"

namespace lx {

namespace {

// A Date converts to its serial number as it is (fraction included); anything else is read
// from its text by `read`.
template <class Read>
Variant dateOrText(const Variant& x, const Variant& fallback, Read read) {
  return guarded(fallback, [&]() -> Variant {
    if (isDate(x)) return DateToFloat(x);
    return read(toText(x));
  });
}

// The low 32 bits of the integer, unsigned, in the printf conversion `format`.
Variant radixText(const Variant& n, const char* format) {
  return guarded(UString(), [&] {
    char buf[16];
    std::snprintf(buf, sizeof buf, format,
                  static_cast<unsigned>(static_cast<uint32_t>(longLongValue(n))));
    return Variant::fromUtf8(buf);
  });
}

Variant Asc(LxBasicFunc& /*lib*/, const Variant& s) {
  return guarded(Variant::int64(0), [&] {
    if (lengthOf(s) == 0) return Variant::int64(0);
    return Variant::int64(s.string()[0]);
  });
}

Variant CBool(LxBasicFunc& /*lib*/, const Variant& x) {
  return guarded(Variant::boolean(false), [&] { return Variant::boolean(boolValue(toText(x))); });
}

Variant CByte(LxBasicFunc& /*lib*/, const Variant& x) {
  // No range check: only the low byte survives, read as signed.
  return guarded(Variant::int32(0), [&] {
    return Variant::int32(static_cast<int8_t>(static_cast<uint8_t>(intValue(toText(x)))));
  });
}

Variant CCur(LxBasicFunc& /*lib*/, const Variant& x) {
  return dateOrText(x, Variant::real(0.0),
                    [](const UString& t) { return Variant::real(doubleValue(t)); });
}

// CDbl and CSng are CCur; CSng does not narrow to single precision.
Variant CDbl(LxBasicFunc& lib, const Variant& x) {
  return CCur(lib, x);
}
Variant CSng(LxBasicFunc& lib, const Variant& x) {
  return CCur(lib, x);
}

// Unguarded: a value without a number of its own fails the call.
Variant Chr(LxBasicFunc& /*lib*/, const Variant& n) {
  return UString(1, static_cast<char16_t>(static_cast<uint32_t>(intValue(n)) & 0xFFFF));
}

Variant CInt(LxBasicFunc& /*lib*/, const Variant& x) {
  return CIntOf(x);
}

Variant CLng(LxBasicFunc& /*lib*/, const Variant& x) {
  return dateOrText(x, Variant::int64(0),
                    [](const UString& t) { return Variant::int64(longLongValue(t)); });
}

Variant CStr(LxBasicFunc& /*lib*/, const Variant& x) {
  return guarded(UString(), [&] { return Variant(toText(x)); });
}

Variant Hex(LxBasicFunc& /*lib*/, const Variant& n) {
  return radixText(n, "%X");
}
Variant Oct(LxBasicFunc& /*lib*/, const Variant& n) {
  return radixText(n, "%o");
}

}  // namespace

Variant CIntOf(const Variant& x) {
  return dateOrText(x, Variant::int32(0),
                    [](const UString& t) { return Variant::int32(intValue(t)); });
}

void registerConversionFunctions(LibraryBuilder& b) {
  b.method("Asc:", &Asc)
      .method("CBool:", &CBool)
      .method("CByte:", &CByte)
      .method("CCur:", &CCur)
      .method("CDbl:", &CDbl)
      .method("CSng:", &CSng)
      .method("Chr:", &Chr)
      .method("CInt:", &CInt)
      .method("CLng:", &CLng)
      .method("CStr:", &CStr)
      .method("Hex:", &Hex)
      .method("Oct:", &Oct);
}

}  // namespace lx

// Math built-ins (Abs ... Tan, Int, Fix, Mod, Round), the random numbers of Rnd and the 32-bit
// bit operations.
#include <atomic>
#include <chrono>
#include <cmath>
#include <cstdint>
#include <limits>
#include <random>

#include "builtins/common.h"
#include "builtins/families.h"
#include "builtins/guard.h"
#include "lxbasic/text.h"

namespace lx {

namespace {

enum class RealOp { Abs, Atn, Cos, Exp, Log, Sin, Tan, Sqr };

double apply(RealOp op, double x) {
  switch (op) {
    case RealOp::Abs:
      return x < 0 ? -x : x;
    case RealOp::Atn:
      return std::atan(x);
    case RealOp::Cos:
      return std::cos(x);
    case RealOp::Exp:
      return std::exp(x);
    case RealOp::Log:
      return std::log(x);
    case RealOp::Sin:
      return std::sin(x);
    case RealOp::Tan:
      return std::tan(x);
    case RealOp::Sqr:
      return std::sqrt(x);
  }
  return x;
}

// The functions of one double argument: read directly, computed in double precision.
// Domain problems (Log(0), Sqr(-1)) are IEEE results, not failures. Abs alone falls back to
// a double zero, the others to an integer one.
template <RealOp Op>
Variant realFunction(LxBasicFunc& /*lib*/, const Variant& x) {
  Variant fallback = Op == RealOp::Abs ? Variant::real(0.0) : Variant::int32(0);
  return guarded(fallback, [&] { return Variant::real(apply(Op, doubleValue(x))); });
}

Variant Sgn(LxBasicFunc& /*lib*/, const Variant& x) {
  return guarded(Variant::int32(0), [&] {
    double d = doubleValue(x);
    return Variant::int32(d < 0 ? -1 : d > 0 ? 1 : 0);
  });
}

// Truncates toward zero, so Int(-2.5) is -2 like Fix; out of range and NaN give INT32_MIN.
Variant Int(LxBasicFunc& /*lib*/, const Variant& x) {
  return guarded(Variant::int32(0), [&] { return Variant::int32(truncToInt32(doubleValue(x))); });
}

Variant Fix(LxBasicFunc& lib, const Variant& x) {
  return Int(lib, x);
}

Variant Mod(LxBasicFunc& /*lib*/, const Variant& a, const Variant& b) {
  return guarded(Variant::int32(0), [&] {
    int32_t n = intValue(a);
    int32_t d = intValue(b);
    // INT32_MIN / -1 traps the processor; it answers 0 like a zero divisor.
    if (d == 0 || (n == std::numeric_limits<int32_t>::min() && d == -1)) return Variant::int32(0);
    return Variant::real(n % d);
  });
}

Variant Round2(LxBasicFunc& /*lib*/, const Variant& x, const Variant& places) {
  return guarded(Variant::int32(0), [&] {
    double value = doubleValue(x);
    // The digit count is unsigned (-1 is 4294967295) and the factor keeps only the low 32
    // bits of its integer part: 10 digits give 1410065408, an infinite power gives 0 (so NaN).
    auto digits = static_cast<uint32_t>(truncToInt64(doubleValue(places)));
    auto factor = static_cast<uint32_t>(truncToInt64(std::pow(10.0, static_cast<double>(digits))));
    double f = static_cast<double>(factor);
    return Variant::real(std::round(value * f) / f);
  });
}

Variant Round1(LxBasicFunc& lib, const Variant& x) {
  return Round2(lib, x, Variant());
}

// The state of Rnd, one value for the whole process; a negative argument answers it again.
std::atomic<uint32_t> rndState{0};

// A seed made of the decimal digits of the clock's fraction of a second, shifted in front of
// the point and scaled back below 2^32.
double clockDigits() {
  auto now = std::chrono::system_clock::now().time_since_epoch();
  double t = std::chrono::duration<double>(now).count();
  double f = t - std::floor(t);
  while (f - std::floor(f) > 0) f *= 10;
  while (f > 4294967295.0) f /= 4294967295.0;
  return f;
}

Variant Rnd(LxBasicFunc& /*lib*/, const Variant& x) {
  int32_t n = 1;
  try {
    n = intValue(x);
  } catch (...) {
    n = 1;
  }
  if (n >= 0) {
    auto seed = static_cast<uint32_t>(truncToInt64(n + clockDigits()));
    // Reseeded on every draw, so the generator need not outlive the call.
    std::minstd_rand generator(seed);
    rndState.store(static_cast<uint32_t>(generator()));
  }
  // The state is below 2^31, so the quotient is always a tiny fraction (under 2.2e-11).
  double q = static_cast<double>(rndState.load()) / std::pow(10.0, 20.0);
  return Variant::real(q - static_cast<uint32_t>(q));
}

// ---- bit operations on 32-bit signed integers; each operand goes through CInt first

int32_t bitOperand(const Variant& v) {
  return intValue(CIntOf(v));
}

enum class BitOp { LShift, RShift, Or, And, XOr };

int32_t apply(BitOp op, int32_t a, int32_t b) {
  switch (op) {
    case BitOp::LShift:
      // Only the low 5 bits of the count are used: 32 shifts by 0, 33 by 1.
      return static_cast<int32_t>(static_cast<uint32_t>(a) << (b & 31));
    case BitOp::RShift:
      return a >> (b & 31);  // copies the sign bit in
    case BitOp::Or:
      return a | b;
    case BitOp::And:
      return a & b;
    case BitOp::XOr:
      return a ^ b;
  }
  return 0;
}

template <BitOp Op>
Variant bitFunction(LxBasicFunc& /*lib*/, const Variant& a, const Variant& b) {
  return guarded(Variant::int32(0),
                 [&] { return Variant::real(apply(Op, bitOperand(a), bitOperand(b))); });
}

}  // namespace

void registerMathFunctions(LibraryBuilder& b) {
  b.method("Abs:", &realFunction<RealOp::Abs>)
      .method("Atn:", &realFunction<RealOp::Atn>)
      .method("Cos:", &realFunction<RealOp::Cos>)
      .method("Exp:", &realFunction<RealOp::Exp>)
      .method("Log:", &realFunction<RealOp::Log>)
      .method("Sin:", &realFunction<RealOp::Sin>)
      .method("Tan:", &realFunction<RealOp::Tan>)
      .method("Sqr:", &realFunction<RealOp::Sqr>)
      .method("Sgn:", &Sgn)
      .method("Int:", &Int)
      .method("Fix:", &Fix)
      .method("Rnd:", &Rnd)
      .method("Mod:N2:", &Mod)
      .method("Round:", &Round1)
      .method("Round:numdecimalplaces:", &Round2)
      .method("LShift:bits:", &bitFunction<BitOp::LShift>)
      .method("RShift:bits:", &bitFunction<BitOp::RShift>)
      .method("BOr:n2:", &bitFunction<BitOp::Or>)
      .method("BAnd:n2:", &bitFunction<BitOp::And>)
      .method("BXOr:n2:", &bitFunction<BitOp::XOr>);
}

}  // namespace lx

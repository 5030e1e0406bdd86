// FormatDateTime and the three number formats. Each call makes its own ICU formatter in the
// default locale, so a locale change shows at the next call.
#include <unicode/datefmt.h>
#include <unicode/dcfmtsym.h>
#include <unicode/decimfmt.h>
#include <unicode/locid.h>

#include <cmath>
#include <memory>
#include <span>

#include "builtins/date_parser.h"
#include "builtins/families.h"
#include "builtins/number_pattern.h"
#include "foundation/calendar.h"
#include "lxbasic/exceptions.h"
#include "lxbasic/text.h"

namespace lx {

namespace {

// The platform pattern holds at most this many characters in its positive part.
constexpr size_t kMaxPattern = 255;

icu::UnicodeString toIcu(UStringView s) {
  return icu::UnicodeString(s.data(), static_cast<int32_t>(s.size()));
}

UString fromIcu(const icu::UnicodeString& s) {
  return UString(s.getBuffer(), static_cast<size_t>(s.length()));
}

void check(UErrorCode status, const char* what) {
  if (U_FAILURE(status))
    throw InvalidArgumentException(std::string(what) + ": " + u_errorName(status));
}

// A literal for the ICU pattern language: symbols such as "Rs." or "'" stay as they are.
UString quoted(UStringView literal) {
  if (literal.empty()) return UString();
  UString out = u"'";
  for (char16_t c : literal) {
    out += c;
    if (c == u'\'') out += c;
  }
  return out + u"'";
}

UString formatWith(const UString& icuPattern, double value) {
  UErrorCode status = U_ZERO_ERROR;
  auto* symbols = new icu::DecimalFormatSymbols(icu::Locale::getDefault(), status);
  icu::DecimalFormat format(toIcu(icuPattern), symbols, status);
  check(status, "number pattern");
  format.setRoundingMode(icu::DecimalFormat::kRoundHalfEven);
  format.setDecimalSeparatorAlwaysShown(false);
  icu::UnicodeString out;
  format.format(value, out);
  return fromIcu(out);
}

// CDbl itself, so that dates, texts and failures read exactly as that built-in reads them.
double cdbl(LxBasicFunc& lib, const Variant& x) {
  Variant r = sendMsgToObj(lib, "CDbl:", std::span<const Variant>(&x, 1)).value;
  return r.isNumber() ? r.number().toDouble() : 0.0;
}

int32_t intArg(const Variant& v) {
  return intValue(toText(v));
}

Variant FormatDateTime(LxBasicFunc& lib, const Variant& date, const Variant& format) {
  // A value that CDate cannot read shows the instant 0 with the styles of serial 0.
  std::optional<double> d = dateOfValue(date);
  double s = cdbl(lib, d ? Variant::date(*d) : Variant());
  using Style = icu::DateFormat::EStyle;
  Style dateStyle = icu::DateFormat::kNone, timeStyle = icu::DateFormat::kNone;
  switch (intArg(format)) {
    case 1:
    case 3:  // the long time shows the full date, as it always has
      dateStyle = icu::DateFormat::kFull;
      break;
    case 2:
      dateStyle = icu::DateFormat::kShort;
      break;
    case 4:
      timeStyle = icu::DateFormat::kShort;
      break;
    default: {
      double n = std::trunc(s);
      if (n != s) timeStyle = icu::DateFormat::kShort;
      if (n != 0 || s == 0) dateStyle = icu::DateFormat::kShort;
    }
  }
  std::unique_ptr<icu::DateFormat> formatter(
      icu::DateFormat::createDateTimeInstance(dateStyle, timeStyle, icu::Locale::getDefault()));
  if (!formatter) throw InvalidArgumentException("no date formatter for the locale");
  formatter->adoptTimeZone(calendar::localZone().release());
  icu::UnicodeString out;
  formatter->format(d.value_or(0.0) * 1000.0, out);
  return fromIcu(out);
}

Variant formatNumberFamily(LxBasicFunc& lib, NumberStyle style, const Variant& x,
                           const Variant& dec, const Variant& lead, const Variant& par,
                           const Variant& group) {
  double v = cdbl(lib, x);
  UString symbol = style == NumberStyle::Currency ? localCurrencySymbol() : UString();
  NumberPattern p =
      buildNumberPattern(style, intArg(dec), intArg(lead), intArg(par), intArg(group), symbol);
  return formatNumberPattern(p, v);
}

// The shorter forms fill in dec -1 and the tristates -2.
template <NumberStyle S>
struct NumberFamily {
  static Variant f5(LxBasicFunc& lib, const Variant& x, const Variant& dec, const Variant& lead,
                    const Variant& par, const Variant& group) {
    return formatNumberFamily(lib, S, x, dec, lead, par, group);
  }
  static Variant f4(LxBasicFunc& lib, const Variant& x, const Variant& dec, const Variant& lead,
                    const Variant& par) {
    return f5(lib, x, dec, lead, par, Variant::int32(-2));
  }
  static Variant f3(LxBasicFunc& lib, const Variant& x, const Variant& dec, const Variant& lead) {
    return f4(lib, x, dec, lead, Variant::int32(-2));
  }
  static Variant f2(LxBasicFunc& lib, const Variant& x, const Variant& dec) {
    return f3(lib, x, dec, Variant::int32(-2));
  }
  static Variant f1(LxBasicFunc& lib, const Variant& x) { return f2(lib, x, Variant::int32(-1)); }

  static void add(LibraryBuilder& b, const std::string& name) {
    b.method(name + ":", &f1)
        .method(name + ":NumDigAfterDec:", &f2)
        .method(name + ":NumDigAfterDec:IncLeadingDig:", &f3)
        .method(name + ":NumDigAfterDec:IncLeadingDig:UseParForNegNum:", &f4)
        .method(name + ":NumDigAfterDec:IncLeadingDig:UseParForNegNum:GroupDig:", &f5);
  }
};

}  // namespace

NumberPattern buildNumberPattern(NumberStyle style, int32_t dec, int32_t lead, int32_t par,
                                 int32_t group, UStringView currencySymbol) {
  if (dec == -1) dec = 2;
  if (lead == -2) lead = -1;
  if (par == -2) par = 0;
  if (group == -2) group = 0;

  NumberPattern p;
  if (style == NumberStyle::Currency) p.prefix = UString(currencySymbol) + u" ";
  UString body = group == -1 ? u"###,###,###,###,###,###,###,###,###,##" : u"#";
  body += lead != 0 ? u"0." : u"#.";
  // The decimals stop where the pattern runs out of room.
  size_t room = kMaxPattern > p.prefix.size() ? kMaxPattern - p.prefix.size() : 0;
  for (int32_t i = 0; i < dec && body.size() < room; ++i) body += u'0';
  if (style == NumberStyle::Percent) body += u'%';
  p.body = body.substr(0, room);
  p.parentheses = par != 0;
  p.zeroBody = style == NumberStyle::Percent ? u"0%" : u"0";
  return p;
}

UString formatNumberPattern(const NumberPattern& p, double value) {
  UString prefix = quoted(p.prefix);
  if (value == 0) return formatWith(prefix + p.zeroBody, 0.0);
  UString icuPattern = prefix + p.body;
  // Without parentheses ICU's own negative form applies: a leading minus.
  if (p.parentheses) icuPattern += u";(" + prefix + p.body + u")";
  return formatWith(icuPattern, value);
}

UString localCurrencySymbol() {
  UErrorCode status = U_ZERO_ERROR;
  icu::DecimalFormatSymbols symbols(icu::Locale::getDefault(), status);
  check(status, "locale symbols");
  return fromIcu(symbols.getSymbol(icu::DecimalFormatSymbols::kCurrencySymbol));
}

void registerFormatFunctions(LibraryBuilder& b) {
  b.method("FormatDateTime:NamedFormat:", &FormatDateTime);
  NumberFamily<NumberStyle::Number>::add(b, "FormatNumber");
  NumberFamily<NumberStyle::Currency>::add(b, "FormatCurrency");
  NumberFamily<NumberStyle::Percent>::add(b, "FormatPercent");
}

}  // namespace lx

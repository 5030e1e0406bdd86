#include "builtins/date_parser.h"

#include <unicode/datefmt.h>
#include <unicode/dtfmtsym.h>
#include <unicode/locid.h>
#include <unicode/smpdtfmt.h>
#include <unicode/uchar.h>
#include <unicode/utf16.h>

#include <array>
#include <chrono>
#include <cmath>
#include <memory>
#include <string>
#include <vector>

#include "foundation/calendar.h"
#include "foundation/day_serial.h"
#include "lxbasic/exceptions.h"
#include "lxbasic/text.h"

namespace lx {

namespace {

struct Token {
  enum Kind { Num, Word, Punct } kind;
  UString text;       // a word in lower case, or the punctuation character
  int64_t value = 0;  // a number's value
  int digits = 0;     // a number's digit count
};

bool isPunct(const Token& t, char16_t c) {
  return t.kind == Token::Punct && t.text[0] == c;
}
bool isWord(const Token& t, UStringView w) {
  return t.kind == Token::Word && t.text == w;
}

// Splits into digit runs, letter runs and the few punctuation marks dates use; anything
// else makes the whole text unreadable.
std::optional<std::vector<Token>> tokenize(UStringView text) {
  std::vector<Token> out;
  size_t i = 0;
  while (i < text.size()) {
    char16_t c = text[i];
    if (isWhitespaceOrNewline(c)) {
      ++i;
    } else if (c >= u'0' && c <= u'9') {
      Token t{Token::Num, {}};
      for (; i < text.size() && text[i] >= u'0' && text[i] <= u'9'; ++i) {
        if (++t.digits > 9) return std::nullopt;
        t.value = t.value * 10 + (text[i] - u'0');
        t.text += text[i];
      }
      out.push_back(std::move(t));
    } else if (UStringView(u"/-.,:+").find(c) != UStringView::npos) {
      out.push_back(Token{Token::Punct, UString(1, c)});
      ++i;
    } else {
      size_t start = i;
      while (i < text.size()) {
        size_t next = i;
        UChar32 cp;
        U16_NEXT(text.data(), next, text.size(), cp);
        if (!u_isalpha(cp)) break;
        i = next;
      }
      if (i == start) return std::nullopt;
      out.push_back(Token{Token::Word, lowerCase(text.substr(start, i - start))});
    }
  }
  return out;
}

// The names a text may use: English always, the locale's as well.
struct Names {
  std::vector<std::pair<UString, int>> months;  // name, month 1-12
  std::vector<UString> weekdays;
  std::vector<UString> am{u"am"}, pm{u"pm"};
  UString order = u"MDY";  // the locale's short date order of month, day and year

  int month(const Token& t) const {
    if (t.kind != Token::Word) return 0;
    for (const auto& [name, m] : months) {
      if (name == t.text) return m;
    }
    return 0;
  }
  static bool among(const std::vector<UString>& list, const Token& t) {
    if (t.kind != Token::Word) return false;
    for (const UString& w : list) {
      if (w == t.text) return true;
    }
    return false;
  }
};

UString fromIcu(const icu::UnicodeString& s) {
  UString out(reinterpret_cast<const char16_t*>(s.getBuffer()), static_cast<size_t>(s.length()));
  out = lowerCase(out);
  while (!out.empty() && out.back() == u'.') out.pop_back();
  return out;
}

Names namesOfLocale() {
  Names n;
  static constexpr std::array<const char16_t*, 12> kMonths = {
      u"january", u"february", u"march",     u"april",   u"may",      u"june",
      u"july",    u"august",   u"september", u"october", u"november", u"december"};
  for (int m = 0; m < 12; ++m) {
    n.months.emplace_back(kMonths[m], m + 1);
    n.months.emplace_back(UString(kMonths[m]).substr(0, 3), m + 1);
  }
  n.months.emplace_back(u"sept", 9);
  for (const char16_t* d : {u"sunday", u"monday", u"tuesday", u"wednesday", u"thursday", u"friday",
                            u"saturday", u"tues", u"thur", u"thurs"}) {
    n.weekdays.emplace_back(d);
    n.weekdays.emplace_back(UString(d).substr(0, 3));
  }

  const icu::Locale& locale = icu::Locale::getDefault();
  UErrorCode status = U_ZERO_ERROR;
  icu::DateFormatSymbols symbols(locale, status);
  if (U_SUCCESS(status)) {
    using Sym = icu::DateFormatSymbols;
    for (auto context : {Sym::FORMAT, Sym::STANDALONE}) {
      for (auto width : {Sym::WIDE, Sym::ABBREVIATED}) {
        int32_t count = 0;
        const icu::UnicodeString* months = symbols.getMonths(count, context, width);
        for (int32_t m = 0; m < count && m < 12; ++m)
          n.months.emplace_back(fromIcu(months[m]), m + 1);
        const icu::UnicodeString* days = symbols.getWeekdays(count, context, width);
        for (int32_t d = 1; d < count; ++d) n.weekdays.push_back(fromIcu(days[d]));
      }
    }
    int32_t count = 0;
    const icu::UnicodeString* ampm = symbols.getAmPmStrings(count);
    if (count >= 2) {
      n.am.push_back(fromIcu(ampm[0]));
      n.pm.push_back(fromIcu(ampm[1]));
    }
  }

  std::unique_ptr<icu::DateFormat> shortFormat(
      icu::DateFormat::createDateInstance(icu::DateFormat::kShort, locale));
  if (auto* simple = dynamic_cast<icu::SimpleDateFormat*>(shortFormat.get())) {
    icu::UnicodeString pattern;
    simple->toPattern(pattern);
    UString order;
    bool quoted = false;
    for (int32_t i = 0; i < pattern.length(); ++i) {
      char16_t c = pattern.charAt(i);
      if (c == u'\'') quoted = !quoted;
      if (quoted) continue;
      char16_t part = c == u'y' ? u'Y' : c == u'M' || c == u'L' ? u'M' : c == u'd' ? u'D' : 0;
      if (part && order.find(part) == UString::npos) order += part;
    }
    if (order.size() == 3) n.order = order;
  }
  return n;
}

struct Time {
  int64_t hour = 0, minute = 0, second = 0;
  double fraction = 0;
  std::optional<int64_t> offset;  // seconds east of UTC, when the text names a zone
};

// Reads a time starting at tokens[i]; on success `end` is one past its last token.
std::optional<Time> readTime(const std::vector<Token>& t, size_t i, size_t& end,
                             const Names& names) {
  auto num = [&](size_t k, int maxDigits) {
    return k < t.size() && t[k].kind == Token::Num && t[k].digits <= maxDigits;
  };
  auto punct = [&](size_t k, char16_t c) { return k < t.size() && isPunct(t[k], c); };
  if (!num(i, 2)) return std::nullopt;
  Time time;
  time.hour = t[i].value;
  size_t k = i + 1;
  bool clock = punct(k, u':') && num(k + 1, 2) && t[k + 1].digits == 2;
  if (clock) {
    time.minute = t[k + 1].value;
    k += 2;
    if (punct(k, u':') && num(k + 1, 2) && t[k + 1].digits == 2) {
      time.second = t[k + 1].value;
      k += 2;
      if (punct(k, u'.') && num(k + 1, 9)) {
        time.fraction = t[k + 1].value / std::pow(10.0, t[k + 1].digits);
        k += 2;
      }
    }
  }
  bool am = k < t.size() && Names::among(names.am, t[k]);
  bool pm = k < t.size() && Names::among(names.pm, t[k]);
  if (!clock && !am && !pm) return std::nullopt;
  if (am || pm) {
    if (time.hour < 1 || time.hour > 12) return std::nullopt;
    time.hour = time.hour % 12 + (pm ? 12 : 0);
    ++k;
  }
  if (time.hour > 23 || time.minute > 59 || time.second > 59) return std::nullopt;

  if (k < t.size() && (isWord(t[k], u"z") || isWord(t[k], u"utc") || isWord(t[k], u"gmt"))) {
    time.offset = 0;
    ++k;
  }
  if ((punct(k, u'+') || punct(k, u'-')) && num(k + 1, 4) && t[k + 1].digits % 2 == 0) {
    int64_t hours = t[k + 1].digits == 4 ? t[k + 1].value / 100 : t[k + 1].value;
    int64_t minutes = t[k + 1].digits == 4 ? t[k + 1].value % 100 : 0;
    size_t after = k + 2;
    if (t[k + 1].digits == 2 && punct(after, u':') && num(after + 1, 2) &&
        t[after + 1].digits == 2) {
      minutes = t[after + 1].value;
      after += 2;
    }
    if (hours > 14 || minutes > 59) return std::nullopt;
    time.offset = (isPunct(t[k], u'-') ? -1 : 1) * (hours * 3600 + minutes * 60);
    k = after;
  }
  end = k;
  return time;
}

struct Day {
  int64_t year = 0, month = 0, day = 0;
};

int64_t fullYear(const Token& t) {
  if (t.digits > 2) return t.value;
  return t.value < 50 ? 2000 + t.value : 1900 + t.value;
}

// A date written with a month name; the other tokens are one or two numbers.
std::optional<Day> readNamedMonth(const std::vector<Token>& t, int month, int64_t thisYear) {
  std::vector<const Token*> numbers;
  for (const Token& tok : t) {
    if (tok.kind == Token::Num) numbers.push_back(&tok);
    if (tok.kind == Token::Punct && UStringView(u"/-.").find(tok.text[0]) == UStringView::npos) {
      return std::nullopt;
    }
  }
  auto looksLikeYear = [](const Token& n) { return n.digits > 2 || n.value > 31; };
  Day d{thisYear, month, 1};
  if (numbers.size() == 1) {
    if (looksLikeYear(*numbers[0])) {
      d.year = fullYear(*numbers[0]);
    } else {
      d.day = numbers[0]->value;
    }
  } else if (numbers.size() == 2) {
    bool yearFirst = looksLikeYear(*numbers[0]);
    d.year = fullYear(*numbers[yearFirst ? 0 : 1]);
    d.day = numbers[yearFirst ? 1 : 0]->value;
  } else {
    return std::nullopt;
  }
  return d;
}

// A date of two or three numbers with one separator throughout.
// Day and month alone with "." need the closing "." ("31.01."), so that a decimal number
// such as 1.5 is no date.
std::optional<Day> readNumeric(const std::vector<Token>& t, const UString& order, int64_t thisYear,
                               bool closingDot) {
  if (t.size() != 3 && t.size() != 5) return std::nullopt;
  char16_t sep = t[1].kind == Token::Punct ? t[1].text[0] : 0;
  if (UStringView(u"/-.").find(sep) == UStringView::npos) return std::nullopt;
  if (t.size() == 3 && sep == u'.' && !closingDot) return std::nullopt;
  for (size_t i = 0; i < t.size(); ++i) {
    bool ok = i % 2 == 0 ? t[i].kind == Token::Num : isPunct(t[i], sep);
    if (!ok) return std::nullopt;
  }
  UString fields = order;
  if (t.size() == 3) {
    fields.erase(fields.find(u'Y'), 1);
  } else if (t[0].digits >= 3) {
    fields = u"YMD";
  }
  Day d{thisYear, 0, 0};
  for (size_t i = 0; i < fields.size(); ++i) {
    const Token& n = t[2 * i];
    if (fields[i] == u'Y') d.year = fullYear(n);
    if (fields[i] == u'M') d.month = n.value;
    if (fields[i] == u'D') d.day = n.value;
    if (fields[i] != u'Y' && n.digits > 2) return std::nullopt;
  }
  return d;
}

bool isLeap(int64_t y) {
  return (y % 4 == 0 && y % 100 != 0) || y % 400 == 0;
}

bool valid(const Day& d) {
  static constexpr int kDays[] = {31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
  if (d.year < 1 || d.year > 9999 || d.month < 1 || d.month > 12) return false;
  int last = kDays[d.month - 1] + (d.month == 2 && isLeap(d.year) ? 1 : 0);
  return d.day >= 1 && d.day <= last;
}

// Days from 1970-01-01 to a date of the proleptic Gregorian calendar.
int64_t daysFromCivil(int64_t y, int64_t m, int64_t d) {
  y -= m <= 2;
  int64_t era = (y >= 0 ? y : y - 399) / 400;
  int64_t yoe = y - era * 400;
  int64_t doy = (153 * (m + (m > 2 ? -3 : 9)) + 2) / 5 + d - 1;
  int64_t doe = yoe * 365 + yoe / 4 - yoe / 100 + doy;
  return era * 146097 + doe - 719468;
}

}  // namespace

std::optional<double> parseDateText(UStringView text, double now) {
  auto tokens = tokenize(text);
  if (!tokens || tokens->empty()) return std::nullopt;
  std::vector<Token>& t = *tokens;
  Names names = namesOfLocale();

  // The time, if any, stands before or after the date.
  std::optional<Time> time;
  for (size_t i = 0; i < t.size() && !time; ++i) {
    size_t end = 0;
    time = readTime(t, i, end, names);
    if (!time) continue;
    size_t begin = i;
    // The "T" of ISO 8601 between date and time.
    if (begin >= 2 && isWord(t[begin - 1], u"t") && t[begin - 2].kind == Token::Num) --begin;
    if (begin != 0 && end != t.size()) return std::nullopt;
    t.erase(t.begin() + static_cast<std::ptrdiff_t>(begin),
            t.begin() + static_cast<std::ptrdiff_t>(end));
  }

  // Words and marks that only decorate the date.
  std::erase_if(t, [&](const Token& tok) {
    return isPunct(tok, u',') || Names::among(names.weekdays, tok) || isWord(tok, u"at") ||
           isWord(tok, u"on") || isWord(tok, u"the") || isWord(tok, u"of");
  });
  bool closingDot = !t.empty() && isPunct(t.back(), u'.');
  if (closingDot) t.pop_back();

  calendar::Fields today = calendar::fieldsOf(now);
  Day day{today.year, today.month, today.day};
  if (t.size() == 1 && t[0].kind == Token::Word) {
    const UString& w = t[0].text;
    if (w == u"now" && !time) return now;
    int delta = w == u"today" ? 0 : w == u"tomorrow" ? 1 : w == u"yesterday" ? -1 : 2;
    if (delta == 2) return std::nullopt;
    Time at = time.value_or(Time{});
    if (at.offset) return std::nullopt;
    return calendar::localInstant(day.year, day.month, day.day + delta, at.hour, at.minute,
                                  at.second) +
           at.fraction;
  }
  if (!t.empty()) {
    int month = 0;
    size_t monthWords = 0;
    for (const Token& tok : t) {
      if (tok.kind != Token::Word) continue;
      month = names.month(tok);
      if (month == 0) return std::nullopt;
      ++monthWords;
    }
    std::optional<Day> read = monthWords == 1 ? readNamedMonth(t, month, today.year)
                              : monthWords == 0
                                  ? readNumeric(t, names.order, today.year, closingDot)
                                  : std::nullopt;
    if (!read) return std::nullopt;
    day = *read;
  } else if (!time) {
    return std::nullopt;
  }
  if (!valid(day)) return std::nullopt;

  Time at = time.value_or(Time{});
  if (at.offset) {
    int64_t seconds = daysFromCivil(day.year, day.month, day.day) * 86400 + at.hour * 3600 +
                      at.minute * 60 + at.second - *at.offset;
    return static_cast<double>(seconds) + at.fraction;
  }
  return calendar::localInstant(day.year, day.month, day.day, at.hour, at.minute, at.second) +
         at.fraction;
}

std::optional<double> dateOfValue(const Variant& v) {
  if (isDate(v)) return v.dateSeconds();
  try {
    if (isNumber(v)) return FloatToDate(v).seconds;
    return parseDateText(toText(v), currentInstant());
  } catch (const Exception&) {
    return std::nullopt;
  }
}

double currentInstant() {
  using namespace std::chrono;
  return duration<double>(system_clock::now().time_since_epoch()).count();
}

}  // namespace lx

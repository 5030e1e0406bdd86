// Pins the time zone (TZ) and the ICU default locale for the life of a test, restoring both.
#pragma once

#include <unicode/locid.h>

#include <cstdlib>
#include <ctime>
#include <optional>
#include <string>

namespace lxtest {

class PinnedZone {
 public:
  PinnedZone(const char* tz, const char* locale) : savedLocale_(icu::Locale::getDefault()) {
    if (const char* old = std::getenv("TZ")) savedTz_ = old;
    setZone(tz);
    setLocale(locale);
  }
  ~PinnedZone() {
    if (savedTz_) {
      setenv("TZ", savedTz_->c_str(), 1);
    } else {
      unsetenv("TZ");
    }
    tzset();
    UErrorCode status = U_ZERO_ERROR;
    icu::Locale::setDefault(savedLocale_, status);
  }
  PinnedZone(const PinnedZone&) = delete;
  PinnedZone& operator=(const PinnedZone&) = delete;

  static void setZone(const char* tz) {
    setenv("TZ", tz, 1);
    tzset();
  }
  static void setLocale(const char* name) {
    UErrorCode status = U_ZERO_ERROR;
    icu::Locale::setDefault(icu::Locale(name), status);
  }

 private:
  std::optional<std::string> savedTz_;
  icu::Locale savedLocale_;
};

}  // namespace lxtest

#pragma once
// ICU's default locale for the length of a test, so that what depends on the
// machine's locale (the machine's formats, weekday names) is the same on any
// machine.
#include <unicode/uloc.h>

#include <string>

namespace zobase::testing {

class LocaleScope {
public:
    explicit LocaleScope(const char* locale) : saved_(uloc_getDefault()) {
        UErrorCode status = U_ZERO_ERROR;
        uloc_setDefault(locale, &status);
    }
    ~LocaleScope() {
        UErrorCode status = U_ZERO_ERROR;
        uloc_setDefault(saved_.c_str(), &status);
    }
    LocaleScope(const LocaleScope&) = delete;
    LocaleScope& operator=(const LocaleScope&) = delete;

private:
    std::string saved_;
};

}  // namespace zobase::testing

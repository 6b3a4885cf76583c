// Both validators against the expressions that define them, on texts short enough for the engine.

#include <text/StringUtils.h>

#include "FuzzText.h"

#include <TextOracles.h>

namespace {

constexpr qsizetype longestEmail = 32;
// The number's expression takes time that multiplies with each digit before a character that it refuses.
constexpr qsizetype longestNumber = 8;

} // namespace

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size)
{
    static std::regex const email = plain::emailExpression();
    static std::regex const number = plain::phoneNumberExpression();
    QString const text = textFrom(data, size);
    bool const isEmail = StringUtils::validateEmail(text);
    bool const isNumber = StringUtils::validatePhoneNumber(text);
    require(!(isEmail && isNumber));
    std::string const bytes = text.toUtf8().toStdString();
    if (text.size() <= longestEmail) {
        require(isEmail == std::regex_match(bytes, email));
    }
    if (text.size() <= longestNumber) {
        require(isNumber == std::regex_match(bytes, number));
    }
    return 0;
}

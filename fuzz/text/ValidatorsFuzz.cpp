// Both validators against the expressions that define them, on texts short enough for the engine.

#include <text/StringUtils.h>

#include "FuzzText.h"

#include <TextOracles.h>

namespace {

// The number's expression takes time that doubles with each digit before a character that it refuses.
constexpr std::size_t longestText = 14;

} // namespace

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size)
{
    static std::regex const email(R"([A-Za-z0-9._%+-]+@[A-Za-z0-9.-]+\.[A-Za-z]{2,4})");
    static std::regex const number(R"(((\+?[\d#*]{1,})(?:[\d#*,]*)*)(?!,))");
    QString const text = textFrom(data, size);
    bool const isEmail = StringUtils::validateEmail(text);
    bool const isNumber = StringUtils::validatePhoneNumber(text);
    require(!(isEmail && isNumber));
    if (size <= longestText) {
        std::string const bytes = text.toUtf8().toStdString();
        require(isEmail == std::regex_match(bytes, email));
        require(isNumber == std::regex_match(bytes, number));
    }
    return 0;
}

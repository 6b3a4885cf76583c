// The size header of a server's answer against sscanf, and the names of form parts against a plain encoder.

#include <network/NetworkUtils.h>

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <vector>

namespace {

constexpr long long untouched = -7;

void require(bool holds)
{
    if (!holds) {
        std::abort();
    }
}

long long sizeByScanf(std::string const& line)
{
    std::string const name = "Content-Length:";
    long number = 0;
    bool const found = line.compare(0, name.size(), name) == 0 &&
                       std::sscanf(line.c_str() + name.size(), "%ld", &number) == 1;
    return found ? number : untouched;
}

void checkHeader(std::string const& line)
{
    // An allocation of its own size, so that a read past the line is one past the allocation.
    std::vector<char> exact(line.begin(), line.end());
    long long size = untouched;
    require(NetworkUtils::headerCallback(exact.data(), 1, exact.size(), &size) == exact.size());
    require(size == sizeByScanf(line));
}

QByteArray encodedName(QString const& name)
{
    QByteArray encoded;
    for (char const c : name.toUtf8()) {
        switch (c) {
        case '"':
            encoded += "%22";
            break;
        case '\r':
            encoded += "%0D";
            break;
        case '\n':
            encoded += "%0A";
            break;
        default:
            encoded += c;
        }
    }
    return encoded;
}

void checkFormPart(QString const& name)
{
    QHttpPart expected;
    expected.setRawHeader("Content-Disposition", "form-data; name=\"" + encodedName(name) + '"');
    expected.setBody("body");
    require(NetworkUtils::getHttpTextPart(name, "body") == expected);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size)
{
    std::string const bytes(reinterpret_cast<char const*>(data), size);
    checkHeader(bytes);
    checkHeader("Content-Length:" + bytes);
    checkFormPart(QString::fromStdString(bytes));
    return 0;
}

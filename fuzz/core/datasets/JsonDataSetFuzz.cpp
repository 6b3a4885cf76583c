// JSON text to a record and back: as the plain way through Qt's classes does it, and the record that was
// written reads as an equal one.

#include <datasets/JsonDataSet.h>

#include <JsonOracle.h>
#include <cstdint>
#include <cstdlib>

namespace {

void require(bool holds)
{
    if (!holds) {
        std::abort();
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size)
{
    QByteArray const json(reinterpret_cast<char const*>(data), static_cast<qsizetype>(size));
    DataSets::DataSet const set = JsonDataSet::serializeJson(json);
    require(set == JsonOracle::read(json));
    QByteArray const written = JsonDataSet::deserializeJson(set);
    require(written == JsonOracle::write(set));
    // Qt drops a byte order mark at the start of a text, one at each reading.
    if (written.contains("\xef\xbb\xbf")) {
        return 0;
    }
    // Nulls in arrays are not stored, so that the indices after them close up the first time.
    DataSets::DataSet const again = JsonDataSet::serializeJson(written);
    require(JsonDataSet::deserializeJson(again) == written);
    require(JsonDataSet::serializeJson(JsonDataSet::deserializeJson(again)) == again);
    return 0;
}

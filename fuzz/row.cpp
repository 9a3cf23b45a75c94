// Data rows: the fast path, with and without groups of fields, compared with the reference path, bit by bit. The first
// byte of the input is the number of columns.

#include "csv/csvrow.h"

#include "fuzz.h"
#include "tests/promises.h"

#include <QtCore/QBuffer>

#include <algorithm>
#include <vector>

int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    if (size == 0)
        return -1;
    QByteArray file = Fuzz::bytesOf(data, size).sliced(1).toByteArray();
    QBuffer device(&file);
    device.open(QIODevice::ReadOnly);
    Csv::LineReader lines(&device);
    std::vector<double> quick(std::max<std::size_t>(data[0], 1));
    std::vector<double> plain(quick.size());
    while (lines.next()) {
        const std::size_t count = Csv::readRowPlainly(lines.text(), plain);
        const auto &bytes = lines.bytes();
        Fuzz::require(!bytes || !Testing::isAscii(*bytes) || Csv::isEmptyRow(*bytes) == (count == 0));
        for (const Csv::FieldGroupReader readGroups : {Csv::FieldGroupReader(), Csv::fieldGroupReader()}) {
            Fuzz::require(Csv::readRow(lines, quick, readGroups) == count && count <= quick.size());
            Fuzz::require(std::equal(quick.begin(), quick.begin() + static_cast<std::ptrdiff_t>(count), plain.begin(),
                                     Testing::sameBits));
        }
    }
    return 0;
}

// The line reader against QTextStream. The first byte of the input is the length of the pieces that the file comes in.

#include "fuzz.h"
#include "tests/csv/agreement.h"

int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    constexpr qsizetype blockOfTextStream = 16384; // across which it loses characters that are no UTF-8
    const QByteArrayView input = Fuzz::bytesOf(data, size);
    if (input.isEmpty() || input.size() > blockOfTextStream)
        return -1;
    Fuzz::require(Testing::linesAgree(input.sliced(1).toByteArray(), std::max<qint64>(data[0], 1)));
    return 0;
}

// Data rows the fast way against the plain way, bit by bit. The first byte of the input is the number of columns.

#include "fuzz.h"
#include "tests/csv/agreement.h"

int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    if (size == 0)
        return -1;
    const QByteArray rows = Fuzz::bytesOf(data, size).sliced(1).toByteArray();
    Fuzz::require(Testing::rowsAgree(rows, std::max<std::size_t>(data[0], 1)));
    return 0;
}

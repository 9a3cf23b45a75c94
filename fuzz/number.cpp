// Our conversions of a number text against Qt's, bit by bit.

#include "fuzz.h"
#include "tests/csv/agreement.h"

int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    const std::string text(data, data + size);
    if (!Testing::isAscii(text))
        return -1;
    Fuzz::require(Testing::numbersAgree(text));
    return 0;
}

// A binary log.

#include "ld/loadlaps.h"

#include "fuzz.h"
#include "tests/promises.h"

using Testing::Laps;

namespace {

// As many laps as cuts: the counter is above the number of its lap nowhere but where the lap begins.
void requireCuts(const Laps &laps)
{
    for (qsizetype i = 0; i < laps.size(); ++i) {
        const auto counter = laps[i]->channel(QStringLiteral("lap"));
        Fuzz::require(!counter.isNull());
        const auto rises = [&counter](long long row, qint32 number) {
            return counter->isValid(row) && counter->value(row) > static_cast<double>(static_cast<float>(number));
        };
        for (long long row = 1; row < counter->size(); ++row)
            Fuzz::require(!rises(row, laps[i]->header().lapNumber));
        if (i > 0 && counter->size() > 0 && counter->isValid(0))
            Fuzz::require(rises(0, laps[i - 1]->header().lapNumber));
    }
}

} // namespace

int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    const auto laps = loadLaps(Fuzz::write(QStringLiteral("log.ld"), Fuzz::bytesOf(data, size)));
    Fuzz::require(Testing::areSound(laps));
    requireCuts(laps);
    return 0;
}

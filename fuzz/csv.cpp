// A text export with its sidecar. A line "====" in the input divides the two; without it there is no sidecar.

#include "csv/orvareader.h"
#include "fuzz.h"
#include "tests/promises.h"

#include <QtCore/QStringConverter>

using Testing::Laps;

namespace {

// As many laps as cuts: the distance falls by more than three quarters between two laps and nowhere else.
void requireCuts(const Laps &laps)
{
    double last = 0.0;
    for (qsizetype i = 0; i < laps.size(); ++i) {
        const auto distance = laps[i]->channel(QStringLiteral("lapdistpct"));
        Fuzz::require(distance || laps[i]->isEmpty());
        for (long long row = 0; distance && row < distance->size(); ++row) {
            const bool isCut = last - distance->value(row) > 0.75;
            Fuzz::require(isCut == (i > 0 && row == 0));
            last = distance->value(row);
        }
    }
}

} // namespace

int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    constexpr QByteArrayView divider("\n====\n");
    const QByteArrayView input = Fuzz::bytesOf(data, size);
    const qsizetype end = input.indexOf(divider);
    const QByteArrayView text = end < 0 ? input : input.first(end);
    // A file of lone surrogates gives texts of them.
    const auto encoding = QStringConverter::encodingForData(text);
    if (encoding && *encoding != QStringConverter::Utf8)
        return -1;

    Fuzz::write(QStringLiteral("log.ldx"), end < 0 ? QByteArrayView() : input.sliced(end + divider.size()));
    ORVAReader reader(nullptr);
    const auto laps = reader.importLaps(Fuzz::write(QStringLiteral("log.csv"), text));
    Fuzz::require(!laps.isEmpty());
    Fuzz::require(Testing::areSound(laps));
    requireCuts(laps);
    return 0;
}

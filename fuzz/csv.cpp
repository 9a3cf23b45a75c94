// A text export with its sidecar, held against the plain way. A line "====" in the input divides the two; without it
// there is no sidecar.

#include "csv/orvareader.h"
#include "fuzz.h"
#include "plainimport.h"
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

// Whether the allowances of an import suffice for @p text, whatever it holds.
bool isModest(QByteArrayView text, QByteArrayView sidecar)
{
    const qint64 lines = text.count('\n') + 1;
    constexpr qint64 allowance = 512LL * 1024;
    return lines * (text.count(',') + sidecar.count('<') + 4) < allowance;
}

void requirePlainLaps(const Laps &laps, const Laps &plain)
{
    Fuzz::require(laps.size() == plain.size());
    for (qsizetype i = 0; i < laps.size(); ++i) {
        Fuzz::require(laps[i]->header().lapTime == plain[i]->header().lapTime);
        Fuzz::require(laps[i]->header().lapNumber == plain[i]->header().lapNumber);
        const QStringList names = plain[i]->getAvailableRecordedChannels();
        Fuzz::require(laps[i]->getAvailableRecordedChannels() == names);
        for (const QString &name : names) {
            const auto samples = laps[i]->channel(name)->samples();
            const auto expected = plain[i]->channel(name)->samples();
            const bool isDistance = name == QLatin1String("lapdistpct");
            Fuzz::require(isDistance || laps[i]->channel(name)->unit() == plain[i]->channel(name)->unit());
            Fuzz::require(
                std::equal(samples.begin(), samples.end(), expected.begin(), expected.end(), Testing::sameBits));
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

    const QByteArrayView sidecar = end < 0 ? QByteArrayView() : input.sliced(end + divider.size());
    Fuzz::write(QStringLiteral("log.ldx"), sidecar);
    ORVAReader reader(nullptr);
    const QString path = Fuzz::write(QStringLiteral("log.csv"), text);
    const auto laps = reader.importLaps(path);
    Fuzz::require(!laps.isEmpty());
    Fuzz::require(Testing::areSound(laps));
    requireCuts(laps);
    if (isModest(text, sidecar))
        requirePlainLaps(laps, PlainImport().importLaps(path));
    return 0;
}

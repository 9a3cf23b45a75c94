// A file of any kind, read as it stands: the checks of a text export and of a .ld log, and their readers.

#include "inspect/binarylog.h"
#include "inspect/check.h"
#include "inspect/textlog.h"

#include "fuzz.h"

int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    const QString path = Fuzz::write(QStringLiteral("log"), Fuzz::bytesOf(data, size));
    Inspect::TextLog text(path);
    for (qint64 end = 0; text.nextRow(); end = text.rowOffset() + static_cast<qint64>(text.row().size())) {
        Fuzz::require(!text.cells().empty());
        Fuzz::require(text.isWide() || (text.rowOffset() >= end && text.rowOffset() < static_cast<qint64>(size)));
    }
    Inspect::BinaryLog log(path);
    size_t samples = 0;
    for (const Inspect::BinaryRecord &record : log.records()) {
        const std::vector<float> read = log.samples(record);
        Fuzz::require(static_cast<qint64>(read.size()) == record.readableSamples);
        samples += read.size();
    }
    Fuzz::require(samples <= 2 * size); // four times the file, of at least two bytes each
    for (const auto &result : {Inspect::checkText(path, {}), Inspect::checkBinary(path, {}), Inspect::checkOther(path)})
        Fuzz::require(!result.findings.isEmpty()); // without laps something is amiss
    return 0;
}

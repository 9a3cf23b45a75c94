#pragma once

// What is in a .ld log: its head, every record, also those that the import skips, and their samples at their
// own rates. The layout of head and records: ld/ldfile.h.

#include "ld/ldfile.h"

#include <QtCore/QDataStream>
#include <QtCore/QFile>
#include <QtCore/QString>

#include <memory>
#include <vector>

namespace Inspect {

/// Why the import does not read a record.
enum class PassedOver
{
    No,
    TypeCode,    ///< its type is not among those that the import lists
    NoRate,      ///< its sample rate is 0
    SampleWidth, ///< listed, but no samples are read for its type and width
    NoSamples,   ///< it has none
    SameName     ///< an earlier record has the same name but for case
};

/// One channel record.
struct BinaryRecord
{
    qint64 offset = 0; ///< of the record in the file
    LdChannelHeader header;
    QString name;
    QString unit;
    PassedOver passedOver = PassedOver::No;
    /// Samples that lie wholly in the file, at most header.sampleCount; 0 for kinds that nobody can decode.
    qint64 samplesInFile = 0;
    /// Samples that samples() gives: the same, or 0 where its limit is reached.
    qint64 readableSamples = 0;

    int rate() const { return header.sampleRate; }
    qint64 claimedSamples() const { return header.sampleCount; }
    /// Seconds that the readable samples last; 0 without a rate.
    double duration() const { return rate() > 0 ? static_cast<double>(readableSamples) / rate() : 0.0; }
    /// What its samples are, such as "16-bit integer", "single precision" or "type 6, 4 bytes".
    QString kindText() const;
};

struct BinaryHead
{
    QString driver;
    QString vehicle;
    QString venue;
    QString session;
};

/// Reads a log's head and records when it is made, and samples when asked. Serves one thread at a time.
class BinaryLog
{
public:
    /// Opens the log at @p path. What cannot be opened has no records.
    explicit BinaryLog(const QString &path);

    bool isOpen() const { return file->isOpen(); }
    QString errorString() const { return error; }
    qint64 fileBytes() const { return file->isOpen() ? file->size() : 0; }
    const BinaryHead &head() const { return headTexts; }
    /// In list order. A list that leads back to a record of its own ends there, and no list is longer than its file has
    /// room for (one record for each 64 bytes).
    const std::vector<BinaryRecord> &records() const { return allRecords; }
    bool isCircular() const { return circular; }
    /// Whether the list leads to a record that does not lie wholly in the file; it ends before that.
    bool isListCutOff() const { return cutOff; }

    /// The readable samples of @p record in its unit, oldest first: integers of 2 and 4 bytes, and floating point of 2,
    /// 4 and 8 bytes (IEEE 754), rounded to single precision. All of it is converted as the import does it.
    ///
    /// Samples of all records together are limited to four times the file, so that records that share their bytes do
    /// not cost out of proportion; readableSamples is 0 for those beyond it.
    std::vector<float> samples(const BinaryRecord &record);

private:
    void readRecords(quint32 firstOffset);
    void judgeRecords(const std::vector<LdChannelHeader> &listed);

    std::unique_ptr<QFile> file;
    QDataStream stream;
    QString error;
    BinaryHead headTexts;
    std::vector<BinaryRecord> allRecords;
    bool circular = false;
    bool cutOff = false;
};

} // namespace Inspect

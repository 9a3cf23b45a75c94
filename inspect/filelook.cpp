#include "inspect/filelook.h"

#include <QtCore/QList>

#include <algorithm>
#include <array>
#include <cstring>

namespace Inspect {

namespace {

struct Signature
{
    QByteArrayView bytes;
    qsizetype offset;
    const char *what;
    const char *remedy;
};

constexpr char unpackIt[] = "Unpack it, and check the log that is in it.";
constexpr char exportIt[] = "Save it as comma-separated text, with the header block of the original export.";
constexpr char exportAgain[] = "Export the log again as comma-separated text (CSV), or pick another file.";
constexpr char pickAnother[] = "Pick the log itself: a text export (.csv) or a binary log (.ld).";

template <std::size_t Size>
constexpr QByteArrayView bytesOf(const char (&text)[Size])
{
    return {text, static_cast<qsizetype>(Size) - 1}; // NULs count
}

const std::array signatures{
    Signature{bytesOf("PK\3\4"), 0, "a ZIP archive", unpackIt},
    Signature{bytesOf("\x1F\x8B"), 0, "a compressed file (gzip)", unpackIt},
    Signature{bytesOf("BZh"), 0, "a compressed file (bzip2)", unpackIt},
    Signature{bytesOf("\xFD"
                      "7zXZ"),
              0, "a compressed file (xz)", unpackIt},
    Signature{bytesOf("\x28\xB5\x2F\xFD"), 0, "a compressed file (zstd)", unpackIt},
    Signature{bytesOf("7z\xBC\xAF\x27\x1C"), 0, "an archive (7z)", unpackIt},
    Signature{bytesOf("Rar!\x1A"), 0, "an archive (rar)", unpackIt},
    Signature{bytesOf("ustar"), 257, "an archive (tar)", unpackIt},
    Signature{bytesOf("\xD0\xCF\x11\xE0\xA1\xB1\x1A\xE1"), 0, "an old office document, such as a spreadsheet (.xls)",
              exportIt},
    Signature{bytesOf("%PDF-"), 0, "a PDF document", exportAgain},
    Signature{bytesOf("SQLite format 3"), 0, "a database", exportAgain},
    Signature{bytesOf("MDF     "), 0, "a measurement file of another kind (MDF)", exportAgain},
    Signature{bytesOf("UnFinMF "), 0, "a measurement file of another kind (MDF)", exportAgain},
    Signature{bytesOf("MATLAB 5.0 MAT-file"), 0, "a file of matrices (.mat)", exportAgain},
    Signature{bytesOf("\x89HDF\r\n"), 0, "a scientific data file (HDF5)", exportAgain},
    Signature{bytesOf("PAR1"), 0, "a table of columns (Parquet)", exportAgain},
    Signature{bytesOf("\x89PNG"), 0, "a picture (PNG)", pickAnother},
    Signature{bytesOf("\xFF\xD8\xFF"), 0, "a picture (JPEG)", pickAnother},
    Signature{bytesOf("\x7F"
                      "ELF"),
              0, "a program", pickAnother},
    Signature{bytesOf("MZ\x90"), 0, "a program", pickAnother},
    Signature{bytesOf("ftyp"), 4, "a video", pickAnother},
};

FileLook lookOfArchive(QByteArrayView head)
{
    if (head.contains(QByteArrayView("opendocument.spreadsheet")))
        return {QStringLiteral("a spreadsheet (.ods)"), QLatin1String(exportIt)};
    if (head.contains(QByteArrayView("[Content_Types].xml")) || head.contains(QByteArrayView("xl/")))
        return {QStringLiteral("a spreadsheet (.xlsx)"), QLatin1String(exportIt)};
    return {};
}

// Marks of a text that is not comma-separated.
FileLook lookOfText(QByteArrayView head)
{
    if (head.startsWith(QByteArrayView("\xEF\xBB\xBF")))
        head = head.sliced(3);
    const QByteArray text = head.toByteArray().trimmed().toLower();
    if (text.contains("<ldxfile"))
        return {QStringLiteral("the sidecar of a log (.ldx)"), QStringLiteral("Check the log that lies beside it.")};
    if (text.startsWith("<!doctype html") || text.startsWith("<html"))
        return {QStringLiteral("a web page (HTML), such as a login or error page saved in place of a download"),
                QStringLiteral("Download the log again.")};
    if (text.startsWith("<?xml") || (text.startsWith('<') && text.contains("</")))
        return {QStringLiteral("an XML file"), QLatin1String(exportAgain)};
    if (text.startsWith('{') || text.startsWith("[{"))
        return {QStringLiteral("a JSON file"), QLatin1String(exportAgain)};
    // Each separator counts where every line of some has it, and commas are rarer.
    const QList<QByteArray> lines = text.split('\n');
    const auto linesWith = [&lines](char separator) {
        return std::count_if(lines.begin(), lines.end(), [separator](const QByteArray &line) {
            return line.count(separator) > line.count(',') + 1;
        });
    };
    constexpr qsizetype minLines = 5;
    if (linesWith(';') >= minLines)
        return {
            QStringLiteral("a table with semicolons between its cells"),
            QStringLiteral("Export it with commas between the cells, and decimal commas in quotes if there are any.")};
    if (linesWith('\t') >= minLines)
        return {QStringLiteral("a table with tabs between its cells"),
                QStringLiteral("Export it with commas between the cells.")};
    return {};
}

} // namespace

FileLook lookOf(QByteArrayView head)
{
    head = head.first(std::min(head.size(), fileLookBytes));
    if (head.startsWith(QByteArrayView("PK\3\4"))) {
        if (FileLook look = lookOfArchive(head); !look.what.isEmpty())
            return look;
    }
    for (const Signature &signature : signatures) {
        if (head.size() > signature.offset && head.sliced(signature.offset).startsWith(signature.bytes))
            return {QLatin1String(signature.what), QLatin1String(signature.remedy)};
    }
    return lookOfText(head);
}

} // namespace Inspect

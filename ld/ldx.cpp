#include "ld/ldx.h"

#include <QtCore/QFile>
#include <QtCore/QFileInfo>
#include <QtCore/QXmlStreamReader>

using KOV::SDK::Session;
using KOV::SDK::Value;

namespace {

constexpr QLatin1String idAttribute("Id");
constexpr QLatin1String valueAttribute("Value");
constexpr QLatin1String unitAttribute("Unit");
constexpr QLatin1String eventId("Event");
constexpr QLatin1String sessionId("Session");
constexpr QLatin1String setupPrefix("CarSetup_");

// Real sidecars have some KiB. The bounds are there because Qt's reader compares all attributes of a tag with each
// other and holds some 60 bytes for each byte of nested tags.
constexpr qint64 mostBytes = 1 << 20;
constexpr qint64 mostTokenBytes = 1 << 14;
constexpr qint64 pieceBytes = 1 << 12;
constexpr int mostDepth = 64;

// The tags of a sidecar one after the other. A pipe or a device in its place would block the import or never end, so
// only regular files are read.
class SidecarReader
{
public:
    explicit SidecarReader(const QString &path)
        : file(path)
    {
        const bool isPath = !path.contains(QChar(u'\0')); // Qt complains aloud about others
        if (isPath && QFileInfo(file).isFile())
            (void)file.open(QIODevice::ReadOnly | QIODevice::Text); // what cannot be opened counts as empty
    }

    // Goes to the next start tag; false where the file ends, breaks off or goes beyond a bound.
    bool next()
    {
        qint64 tokenBytes = 0;
        while (depth <= mostDepth) {
            const auto token = xml.readNext();
            if (token == QXmlStreamReader::Invalid) {
                if (xml.error() != QXmlStreamReader::PrematureEndOfDocumentError || tokenBytes >= mostTokenBytes)
                    return false;
                const QByteArray piece = file.isOpen() && allBytes < mostBytes ? file.read(pieceBytes) : QByteArray();
                if (piece.isEmpty())
                    return false;
                xml.addData(piece);
                tokenBytes += piece.size();
                allBytes += piece.size();
                continue;
            }
            tokenBytes = 0;
            if (token == QXmlStreamReader::EndDocument)
                return false;
            if (token == QXmlStreamReader::EndElement)
                --depth;
            if (token == QXmlStreamReader::StartElement && ++depth <= mostDepth)
                return true;
        }
        return false;
    }
    QXmlStreamAttributes attributes() const { return xml.attributes(); }

private:
    QFile file;
    QXmlStreamReader xml;
    qint64 allBytes = 0;
    int depth = 0;
};

} // namespace

Session getSessionFromString(const QString &text)
{
    if (text == QLatin1String("Race"))
        return Session::Race;
    if (text == QLatin1String("Offline testing") || text == QLatin1String("Test"))
        return Session::TestSession;
    if (text == QLatin1String("Qualify"))
        return Session::Qualify;
    if (text == QLatin1String("Practice"))
        return Session::Practice;
    if (text == QLatin1String("Warmup"))
        return Session::Warmup;
    return Session::UnknownSession;
}

QString sidecarPath(const QString &logPath)
{
    const QFileInfo log(logPath);
    return logPath.isEmpty() ? QString() : log.absolutePath() + u'/' + log.baseName() + QLatin1String(".ldx");
}

Session loadSession(const QString &path)
{
    SidecarReader sidecar(path);
    while (sidecar.next()) {
        const QXmlStreamAttributes attributes = sidecar.attributes();
        if (attributes.value(idAttribute) == eventId)
            return getSessionFromString(attributes.value(valueAttribute).toString());
    }
    return Session::UnknownSession;
}

QMap<QString, Value> loadValues(const QString &path)
{
    QMap<QString, Value> values;
    SidecarReader sidecar(path);
    while (sidecar.next()) {
        const QXmlStreamAttributes attributes = sidecar.attributes();
        if (!attributes.hasAttribute(idAttribute))
            continue;
        const QStringView id = attributes.value(idAttribute);
        if (id == eventId || id == sessionId)
            continue;
        const QStringView text = attributes.value(valueAttribute);
        const QString name = id.toString().remove(setupPrefix);
        if (attributes.hasAttribute(unitAttribute))
            values.insert(name, Value(text.toDouble(), attributes.value(unitAttribute).toString()));
        else
            values.insert(name, Value(text.toString(), QString()));
    }
    return values;
}

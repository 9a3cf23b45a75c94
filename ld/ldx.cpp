#include "ld/ldx.h"

#include "sdk/regularfile.h"

#include <QtCore/QFile>
#include <QtCore/QFileInfo>
#include <QtCore/QIODevice>
#include <QtCore/QXmlStreamReader>

#include <algorithm>

using KOV::SDK::Session;
using KOV::SDK::Value;

namespace {

constexpr QLatin1String idAttribute("Id");
constexpr QLatin1String valueAttribute("Value");
constexpr QLatin1String unitAttribute("Unit");
constexpr QLatin1String eventId("Event");
constexpr QLatin1String sessionId("Session");
constexpr QLatin1String setupPrefix("CarSetup_");

// Real sidecars have a few KiB. The limits are there because Qt's reader compares all attributes of a tag with each
// other and holds some 60 bytes for each byte of nested tags.
constexpr qint64 maxBytes = 1 << 20;
constexpr qint64 maxTokenBytes = 1 << 14;
constexpr int maxDepth = 64;

// The file as Qt's reader sees it: it ends after maxBytes, and in the middle of a token that goes on for maxTokenBytes.
// The reader itself decides how much it takes at a time, since bytes that are not valid UTF-8 end its work when they
// are taken: what it makes of a damaged file depends on that.
class BoundedFile : public QIODevice
{
public:
    explicit BoundedFile(const QString &path)
        : file(path)
    {
        (void)KOV::SDK::openRegularFile(file, ReadOnly | Text); // what cannot be opened counts as empty
        open(ReadOnly | Unbuffered);
    }

    void beginToken() { tokenBytes = 0; }
    bool isSequential() const override { return true; }

protected:
    qint64 readData(char *data, qint64 maxSize) override
    {
        if (!file.isOpen() || tokenBytes >= maxTokenBytes)
            return 0;
        const qint64 count = file.read(data, std::min(maxSize, maxBytes - file.pos()));
        tokenBytes += count;
        return count;
    }
    qint64 writeData(const char * /*data*/, qint64 /*maxSize*/) override { return -1; }

private:
    QFile file;
    qint64 tokenBytes = 0;
};

// The start tags of a sidecar one after the other.
class SidecarReader
{
public:
    explicit SidecarReader(const QString &path)
        : file(path)
        , xml(&file)
    {
    }

    // Goes to the next start tag; false where the file ends, is damaged or exceeds a limit.
    bool next()
    {
        while (depth <= maxDepth && !xml.atEnd()) {
            file.beginToken();
            const auto token = xml.readNext();
            if (token == QXmlStreamReader::EndElement)
                --depth;
            if (token == QXmlStreamReader::StartElement && ++depth <= maxDepth)
                return true;
        }
        return false;
    }
    QXmlStreamAttributes attributes() const { return xml.attributes(); }

private:
    BoundedFile file;
    QXmlStreamReader xml;
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

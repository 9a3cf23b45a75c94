#include "ld/ldx.h"

#include "sdk/regularfile.h"

#include <QtCore/QFile>
#include <QtCore/QFileInfo>
#include <QtCore/QIODevice>
#include <QtCore/QXmlStreamReader>

#include <algorithm>
#include <utility>

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

// Calls visit(attributes) for the start tags of the sidecar at @p path, until it returns false. Ends where the file
// does, is damaged or exceeds a limit.
template <typename Visit>
void visitElements(const QString &path, Visit visit)
{
    BoundedFile file(path);
    QXmlStreamReader xml(&file);
    for (int depth = 0; depth <= maxDepth && !xml.atEnd();) {
        file.beginToken();
        const auto token = xml.readNext();
        if (token == QXmlStreamReader::EndElement)
            --depth;
        if (token == QXmlStreamReader::StartElement && ++depth <= maxDepth && !visit(xml.attributes()))
            return;
    }
}

} // namespace

Session getSessionFromString(const QString &text)
{
    constexpr std::pair<QLatin1String, Session> words[]{
        {QLatin1String("Race"), Session::Race},         {QLatin1String("Offline testing"), Session::TestSession},
        {QLatin1String("Test"), Session::TestSession},  {QLatin1String("Qualify"), Session::Qualify},
        {QLatin1String("Practice"), Session::Practice}, {QLatin1String("Warmup"), Session::Warmup}};
    for (const auto &[word, session] : words) {
        if (text == word)
            return session;
    }
    return Session::UnknownSession;
}

QString sidecarPath(const QString &logPath)
{
    const QFileInfo log(logPath);
    return logPath.isEmpty() ? QString() : log.absolutePath() + u'/' + log.baseName() + QLatin1String(".ldx");
}

Session loadSession(const QString &path)
{
    Session session = Session::UnknownSession;
    visitElements(path, [&session](const QXmlStreamAttributes &attributes) {
        const bool isEvent = attributes.value(idAttribute) == eventId;
        if (isEvent)
            session = getSessionFromString(attributes.value(valueAttribute).toString());
        return !isEvent;
    });
    return session;
}

QMap<QString, Value> loadValues(const QString &path)
{
    QMap<QString, Value> values;
    visitElements(path, [&values](const QXmlStreamAttributes &attributes) {
        const QStringView id = attributes.value(idAttribute);
        if (!attributes.hasAttribute(idAttribute) || id == eventId || id == sessionId)
            return true;
        const QStringView text = attributes.value(valueAttribute);
        const QString name = id.toString().remove(setupPrefix);
        if (attributes.hasAttribute(unitAttribute))
            values.insert(name, Value(text.toDouble(), attributes.value(unitAttribute).toString()));
        else
            values.insert(name, Value(text.toString(), QString()));
        return true;
    });
    return values;
}

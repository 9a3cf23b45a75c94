#include "sdk/carinfo.h"

#include "sdk/wholenumber.h"

#include <QtCore/QDataStream>
#include <QtCore/QDateTime>
#include <QtCore/QIODevice>
#include <QtCore/QMap>
#include <QtCore/QMetaType>
#include <QtCore/QStringList>
#include <QtCore/QVariant>

namespace KOV::SDK {

namespace {

struct TextEntry
{
    QLatin1String key;
    QString CarInfo::*member;
};

// What stands on a stream under which key: the seven texts, and two more.
constexpr TextEntry textEntries[]{
    {QLatin1String("carId"), &CarInfo::carId},           {QLatin1String("carName"), &CarInfo::carName},
    {QLatin1String("className"), &CarInfo::className},   {QLatin1String("driverName"), &CarInfo::driverName},
    {QLatin1String("pluginName"), &CarInfo::pluginName}, {QLatin1String("sourceName"), &CarInfo::sourceName},
    {QLatin1String("teamName"), &CarInfo::teamName}};
constexpr QLatin1String detailedTelemetryKey("detailedTelemetry");
constexpr QLatin1String statusKey("status");

constexpr int maximumDepth = 32;

/// The QMetaType id of a type on a stream older than Qt 4, which numbered them otherwise; only what a car is made of.
quint32 typeBeforeQt4(quint32 type)
{
    switch (type) {
    case 3:
        return QMetaType::QString;
    case 16:
        return QMetaType::Int;
    case 18:
        return QMetaType::Bool;
    default:
        return QMetaType::User;
    }
}

/// Qt 4 had two blocks of numbers for what Qt Core holds; the second was later moved up to the first.
quint32 typeOfQt4(quint32 type)
{
    constexpr quint32 secondBlock = 128;
    constexpr quint32 distance = 97;
    return type >= secondBlock ? type - distance : type;
}

/// Reads a count and calls @p readItem so often, or until the stream has an error. A count alone reserves nothing.
template <typename ReadItem>
void readItems(QDataStream &stream, ReadItem readItem)
{
    quint32 count = 0;
    stream >> count;
    constexpr quint32 firstMarker = 0xFFFFFFFE; // of a longer count, or of none at all
    if (count >= firstMarker)
        stream.setStatus(QDataStream::ReadCorruptData);
    for (quint32 i = 0; i < count && stream.status() == QDataStream::Ok; ++i)
        readItem();
}

/// Reads a QDateTime as QDataStream writes one, but none with a time zone: Qt takes the zone's name for that of a file,
/// and a name on a stream may lead anywhere.
QVariant readDateTime(QDataStream &stream)
{
    QDateTime dateTime;
    if (stream.version() < QDataStream::Qt_5_2) { // there were no zones
        stream >> dateTime;
        return dateTime;
    }
    QDate date;
    QTime time;
    qint8 kind = 0;
    stream >> date >> time >> kind;
    QByteArray bytes;
    QDataStream form(&bytes, QIODevice::ReadWrite);
    form << date << time << kind;
    if (kind == Qt::OffsetFromUTC) {
        qint32 offset = 0;
        stream >> offset;
        form << offset;
    }
    if (kind < Qt::LocalTime || kind > Qt::OffsetFromUTC) {
        stream.setStatus(QDataStream::ReadCorruptData);
        return {};
    }
    form.device()->reset();
    form >> dateTime;
    return dateTime;
}

/// Reads a QVariant as QDataStream writes one.
///
/// QVariant's own reader would read any registered type, reserve whatever length a list claims, and call itself for
/// every level of a nested list, so a few bytes of a damaged stream could end the process. Lists and maps convert to
/// none of a car's members and are read past, all but lists of texts: one of a single text converts to it.
QVariant readValue(QDataStream &stream, int depth = 0)
{
    quint32 type = 0;
    stream >> type;
    if (stream.version() < QDataStream::Qt_4_0)
        type = typeBeforeQt4(type);
    else if (stream.version() < QDataStream::Qt_5_0)
        type = typeOfQt4(type);
    if (stream.version() >= QDataStream::Qt_4_2) {
        qint8 isNull = 0; // no conversion asks for it
        stream >> isNull;
    }
    switch (type) {
    case QMetaType::UnknownType:
        if (stream.version() < QDataStream::Qt_5_0) {
            QString placeholder;
            stream >> placeholder;
        }
        return {};
    case QMetaType::QVariantList:
    case QMetaType::QVariantMap:
    case QMetaType::QVariantHash:
        if (depth == maximumDepth)
            break;
        readItems(stream, [&] {
            if (type != QMetaType::QVariantList) {
                QString key;
                stream >> key;
            }
            readValue(stream, depth + 1);
        });
        return {};
    case QMetaType::QStringList: {
        QStringList texts;
        readItems(stream, [&] {
            QString text;
            stream >> text;
            texts.append(text);
        });
        return texts;
    }
    case QMetaType::QByteArrayList:
        readItems(stream, [&] {
            QByteArray text;
            stream >> text;
        });
        return {};
    case QMetaType::QDateTime:
        return readDateTime(stream);
    case QMetaType::Bool:
    case QMetaType::Int:
    case QMetaType::UInt:
    case QMetaType::LongLong:
    case QMetaType::ULongLong:
    case QMetaType::Long:
    case QMetaType::ULong:
    case QMetaType::Short:
    case QMetaType::UShort:
    case QMetaType::Char:
    case QMetaType::UChar:
    case QMetaType::SChar:
    case QMetaType::Double:
    case QMetaType::Float:
    case QMetaType::Nullptr:
    case QMetaType::Char16:
    case QMetaType::Char32:
    case QMetaType::QChar:
    case QMetaType::QString:
    case QMetaType::QByteArray:
    case QMetaType::QRegularExpression:
    case QMetaType::QDate:
    case QMetaType::QTime:
    case QMetaType::QUrl:
    case QMetaType::QLocale:
    case QMetaType::QRect:
    case QMetaType::QRectF:
    case QMetaType::QSize:
    case QMetaType::QSizeF:
    case QMetaType::QLine:
    case QMetaType::QLineF:
    case QMetaType::QPoint:
    case QMetaType::QPointF:
    case QMetaType::QUuid: {
        QVariant value{QMetaType(static_cast<int>(type))};
        if (value.metaType().load(stream, value.data()))
            return value;
        break;
    }
    default:
        break;
    }
    stream.setStatus(QDataStream::ReadCorruptData);
    return {};
}

/// Reads a QMap<QString, QVariant>; empty where the stream has an error, whose status then tells.
QMap<QString, QVariant> readMap(QDataStream &stream)
{
    // Like Qt's own readers, this one is not held up by an error from before and does not hide it.
    const QDataStream::Status before = stream.status();
    if (!stream.isDeviceTransactionStarted())
        stream.resetStatus();
    QMap<QString, QVariant> values;
    readItems(stream, [&] {
        QString key;
        stream >> key;
        values.insert(key, readValue(stream));
    });
    if (stream.status() != QDataStream::Ok)
        values.clear();
    if (before != QDataStream::Ok && !stream.isDeviceTransactionStarted()) {
        stream.resetStatus();
        stream.setStatus(before);
    }
    return values;
}

} // namespace

QDataStream &operator<<(QDataStream &stream, const CarInfo &car)
{
    QMap<QString, QVariant> values{{detailedTelemetryKey, car.detailedTelemetry},
                                   {statusKey, static_cast<int>(car.status)}};
    for (const auto &[key, member] : textEntries)
        values.insert(key, car.*member);
    return stream << values;
}

QDataStream &operator>>(QDataStream &stream, CarInfo &car)
{
    const QMap<QString, QVariant> values = readMap(stream);
    for (const auto &[key, member] : textEntries)
        car.*member = values.value(key).toString();
    car.detailedTelemetry = values.value(detailedTelemetryKey).toBool();
    car.status = static_cast<CarStatus>(wholeNumber(values.value(statusKey)));
    return stream;
}

} // namespace KOV::SDK

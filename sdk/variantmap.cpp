#include "sdk/variantmap.h"

#include <QtCore/QBitArray>
#include <QtCore/QCborValue>
#include <QtCore/QDataStream>
#include <QtCore/QDateTime>
#include <QtCore/QIODevice>
#include <QtCore/QJsonValue>
#include <QtCore/QMetaType>
#include <QtCore/QPoint>
#include <QtCore/QStringList>

#include <algorithm>
#include <iterator>
#include <limits>
#include <utility>

namespace KOV::SDK {

namespace {

constexpr int maximumDepth = 32;
constexpr quint32 float16 = 63; // QMetaType::Float16, which Qt has from 6.5 on

/// The QMetaType id of @p type on a stream in the version of Qt 3, which numbered types otherwise.
quint32 typeOfQt3(quint32 type)
{
    constexpr std::pair<quint32, int> types[]{
        {0, QMetaType::UnknownType}, {1, QMetaType::QVariantMap},  {2, QMetaType::QVariantList},
        {3, QMetaType::QString},     {4, QMetaType::QStringList},  {8, QMetaType::QRect},
        {9, QMetaType::QSize},       {14, QMetaType::QPoint},      {16, QMetaType::Int},
        {17, QMetaType::UInt},       {18, QMetaType::Bool},        {19, QMetaType::Double},
        {26, QMetaType::QDate},      {27, QMetaType::QTime},       {28, QMetaType::QDateTime},
        {29, QMetaType::QByteArray}, {30, QMetaType::QBitArray},   {33, QMetaType::LongLong},
        {34, QMetaType::ULongLong},  {35, QMetaType::QEasingCurve}};
    const auto isNumbered = [type](const auto &entry) { return entry.first == type; };
    const auto *const entry = std::find_if(std::begin(types), std::end(types), isNumbered);
    return static_cast<quint32>(entry != std::end(types) ? entry->second : QMetaType::User); // the rest is QtGui's
}

/// The QMetaType id of @p type on a stream in the version of Qt 4, which had two blocks of numbers for what Qt Core
/// holds; the second was later moved up to the first.
quint32 typeOfQt4(quint32 type)
{
    constexpr quint32 secondBlock = 128;
    constexpr quint32 distance = 97;
    return type >= secondBlock ? type - distance : type;
}

/// The type number that is followed by the type's name, on a stream in @p version.
quint32 namedType(int version)
{
    constexpr quint32 ofQt4 = 127;
    constexpr quint32 ofQt5 = 1024;
    return version < QDataStream::Qt_5_0 ? ofQt4 : version < QDataStream::Qt_6_0 ? ofQt5 : quint32{QMetaType::User};
}

/// The QMetaType id of the type called @p name, or User for one that is not registered.
quint32 typeOfName(const QByteArray &name)
{
    const int type = QMetaType::fromName(name.constData()).id(); // up to the NUL that ends a name on a stream
    return static_cast<quint32>(type == QMetaType::UnknownType ? QMetaType::User : type);
}

template <typename T>
T read(QDataStream &stream)
{
    T item{};
    stream >> item;
    return item;
}

/// Reads a count and calls @p readItem that many times, or until the stream has an error. Reserves nothing.
template <typename ReadItem>
void readItems(QDataStream &stream, ReadItem readItem)
{
    const auto count = read<quint32>(stream);
    constexpr quint32 firstMarker = 0xFFFFFFFE; // of a longer count, or of none at all
    if (count >= firstMarker)
        stream.setStatus(QDataStream::ReadCorruptData);
    for (quint32 i = 0; i < count && stream.status() == QDataStream::Ok; ++i)
        readItem();
}

void skipBitArray(QDataStream &stream)
{
    const quint64 bitCount = stream.version() < QDataStream::Qt_6_0 ? read<quint32>(stream) : read<quint64>(stream);
    quint64 byteCount = bitCount / 8 + (bitCount % 8 != 0 ? 1 : 0);
    while (byteCount > 0 && stream.status() == QDataStream::Ok) {
        const int piece = static_cast<int>(std::min<quint64>(byteCount, std::numeric_limits<int>::max()));
        if (stream.skipRawData(piece) != piece)
            stream.setStatus(QDataStream::ReadPastEnd);
        byteCount -= static_cast<quint64>(piece);
    }
}

/// Qt would read a pointer to a function from the stream, and use it.
void skipEasingCurve(QDataStream &stream)
{
    read<quint8>(stream);  // its kind
    read<quint64>(stream); // the pointer
    if (!read<bool>(stream))
        return;
    constexpr int parameterCount =
        3; // period, amplitude and overshoot of a curve; tension, continuity, bias of a point
    const auto skipParameters = [&stream] {
        for (int i = 0; i < parameterCount; ++i)
            read<qreal>(stream);
    };
    skipParameters();
    if (stream.version() < QDataStream::Qt_5_13)
        return;
    readItems(stream, [&stream] { read<QPointF>(stream); });
    readItems(stream, [&] {
        read<QPointF>(stream);
        skipParameters();
    });
}

void skipTimeZone(QDataStream &stream)
{
    if (read<QString>(stream) != QLatin1String("OffsetFromUtc"))
        return;
    read<QString>(stream); // its own name
    read<qint32>(stream);
    read<QString>(stream); // its display name and the short form
    read<QString>(stream);
    read<qint32>(stream); // the territory
    read<QString>(stream);
}

QVariant readDateTime(QDataStream &stream)
{
    if (stream.version() < QDataStream::Qt_5_2) // there were no zones
        return read<QDateTime>(stream);
    const auto date = read<QDate>(stream);
    const auto time = read<QTime>(stream);
    const auto kind = read<qint8>(stream);
    if (kind == Qt::TimeZone) {
        skipTimeZone(stream);
        return {};
    }
    QByteArray bytes;
    QDataStream form(&bytes, QIODevice::ReadWrite);
    form << date << time << kind;
    if (kind == Qt::OffsetFromUTC)
        form << read<qint32>(stream);
    form.device()->reset();
    return read<QDateTime>(form);
}

QVariant readJsonValue(QDataStream &stream)
{
    switch (read<quint8>(stream)) {
    case QJsonValue::Bool:
        return QJsonValue(read<bool>(stream));
    case QJsonValue::Double:
        return QJsonValue(read<double>(stream));
    case QJsonValue::String:
        return QJsonValue(read<QString>(stream));
    case QJsonValue::Array:
    case QJsonValue::Object:
        read<QByteArray>(stream);
        return {};
    default:
        return {};
    }
}

QVariant readCborValue(QDataStream &stream)
{
    const auto bytes = read<QByteArray>(stream);
    // The top three bits of the first byte say what follows. Arrays, maps and tags could take a hundred times their
    // size in memory, and convert to nothing.
    constexpr int arrays = 4;
    constexpr int tags = 6;
    const int kind = bytes.isEmpty() ? arrays : static_cast<unsigned char>(bytes.front()) >> 5;
    return kind >= arrays && kind <= tags ? QVariant() : QVariant::fromValue(QCborValue::fromCbor(bytes));
}

void skipContainer(QDataStream &stream, quint32 type, int depth);

QVariant readValue(QDataStream &stream, int depth)
{
    const int version = stream.version();
    const auto number = read<quint32>(stream);
    if (version >= QDataStream::Qt_4_2)
        read<qint8>(stream); // whether it is null, which no conversion asks
    quint32 type = number;
    if (version < QDataStream::Qt_4_0)
        type = typeOfQt3(number);
    else if (number == namedType(version)) // what Qt Core has added since goes by name
        type = typeOfName(read<QByteArray>(stream));
    else if (version < QDataStream::Qt_5_0)
        type = typeOfQt4(number);
    switch (type) {
    case QMetaType::UnknownType:
        if (version < QDataStream::Qt_5_0)
            read<QString>(stream); // a placeholder
        return {};
    case QMetaType::QVariant:
    case QMetaType::QVariantPair:
    case QMetaType::QVariantList:
    case QMetaType::QVariantMap:
    case QMetaType::QVariantHash:
        if (depth == maximumDepth)
            break;
        skipContainer(stream, type, depth + 1);
        return {};
    case QMetaType::QStringList: {
        QStringList texts; // a single one converts to a text
        readItems(stream, [&] { texts.append(read<QString>(stream)); });
        return texts;
    }
    case QMetaType::QByteArrayList:
        readItems(stream, [&] { read<QByteArray>(stream); });
        return {};
    case QMetaType::QBitArray:
        skipBitArray(stream);
        return {};
    case QMetaType::QEasingCurve:
        skipEasingCurve(stream);
        return {};
    case QMetaType::QDateTime:
        return readDateTime(stream);
    case QMetaType::QJsonValue:
        return readJsonValue(stream);
    case QMetaType::QJsonObject:
    case QMetaType::QJsonArray:
    case QMetaType::QJsonDocument:
    case QMetaType::QCborArray:
    case QMetaType::QCborMap:
        read<QByteArray>(stream);
        return {};
    case QMetaType::QCborValue:
        return readCborValue(stream);
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
    case float16:
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
    case QMetaType::QUuid:
    case QMetaType::QCborSimpleType: {
        const QMetaType metaType(static_cast<int>(type));
        QVariant value(metaType);
        if (metaType.isValid() && metaType.load(stream, value.data()))
            return value;
        break;
    }
    default:
        break;
    }
    stream.setStatus(QDataStream::ReadCorruptData);
    return {};
}

void skipContainer(QDataStream &stream, quint32 type, int depth)
{
    switch (type) {
    case QMetaType::QVariantPair:
        readValue(stream, depth);
        [[fallthrough]];
    case QMetaType::QVariant:
        readValue(stream, depth);
        break;
    default:
        readItems(stream, [&] {
            if (type != QMetaType::QVariantList)
                read<QString>(stream); // a key
            readValue(stream, depth);
        });
    }
}

} // namespace

QMap<QString, QVariant> readVariantMap(QDataStream &stream)
{
    const QDataStream::Status before = stream.status();
    if (!stream.isDeviceTransactionStarted())
        stream.resetStatus();
    QMap<QString, QVariant> values;
    readItems(stream, [&] {
        const auto key = read<QString>(stream);
        values.insert(key, readValue(stream, 0));
    });
    if (stream.status() != QDataStream::Ok)
        values.clear();
    if (before != QDataStream::Ok && !stream.isDeviceTransactionStarted()) {
        stream.resetStatus();
        stream.setStatus(before);
    }
    return values;
}

} // namespace KOV::SDK

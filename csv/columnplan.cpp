#include "csv/columnplan.h"

#include "csv/csvtext.h"

#include <QtCore/QHash>

#include <algorithm>
#include <utility>

namespace Csv {

namespace {

constexpr std::size_t maxColumns = std::size_t{1} << 20; // real exports have some hundreds

// Gives equal texts one index, in order of first appearance.
class TextIndex
{
public:
    explicit TextIndex(QList<QString> *texts)
        : texts(texts)
    {
    }

    qint32 indexOf(const QString &text)
    {
        const auto next = static_cast<qint32>(texts->size());
        const auto entry = indexes.constFind(text);
        if (entry != indexes.cend())
            return *entry;
        indexes.insert(text, next);
        texts->append(text);
        return next;
    }

private:
    QHash<QString, qint32> indexes;
    QList<QString> *texts;
};

} // namespace

void ColumnPlan::setNames(const QString &row)
{
    columns.reserve(std::min(static_cast<std::size_t>(row.count(u',')) + 1, maxColumns));
    TextIndex index(&names);
    std::vector<qint32> lastColumns; // by name
    for (const QStringView title : QStringView(row).tokenize(u',')) {
        if (columns.size() == maxColumns)
            break;
        const qint32 name = index.indexOf(valueName(title));
        lastColumns.resize(static_cast<std::size_t>(names.size()), -1);
        qint32 &last = lastColumns[static_cast<std::size_t>(name)];
        columns.push_back(
            {name, std::exchange(last, static_cast<qint32>(columns.size())), static_cast<qint32>(names.size())});
    }
}

void ColumnPlan::setUnits(const QString &row)
{
    TextIndex index(&units);
    std::size_t column = 0;
    for (const QStringView unit : QStringView(row).tokenize(u',')) {
        if (column == columns.size())
            break;
        columns[column++].unit = index.indexOf(unit.toString());
    }
    unitsAreSet = true;
}

} // namespace Csv

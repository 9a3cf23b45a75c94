#include "inspect/rewrite.h"

#include "inspect/rewriteerror.h"
#include "inspect/rewriteexport.h"
#include "inspect/rewritelog.h"
#include "inspect/rewriteparts.h"
#include "inspect/sidecarwriter.h"
#include "ld/ldx.h"

#include <QtCore/QFile>
#include <QtCore/QFileInfo>
#include <QtCore/QSaveFile>

#include <filesystem>
#include <system_error>

namespace Inspect {

namespace {

std::filesystem::path systemPath(const QString &path)
{
    return QFileInfo(path).filesystemAbsoluteFilePath();
}

// Whether both names lead to one file, also by links of either kind.
bool isSameFile(const QString &one, const QString &other)
{
    std::error_code error;
    return QFileInfo(one).absoluteFilePath() == QFileInfo(other).absoluteFilePath() ||
           std::filesystem::equivalent(systemPath(one), systemPath(other), error);
}

bool isThere(const QString &path)
{
    const QFileInfo info(path);
    return info.exists() || info.isSymLink();
}

// A file that takes its name when it is complete, and leaves nothing otherwise.
class TargetFile
{
public:
    explicit TargetFile(const QString &path)
        : file(path)
    {
        if (!file.open(QIODevice::WriteOnly | QIODevice::Unbuffered))
            fail(file.errorString());
    }

    QIODevice &device() { return file; }
    void commit()
    {
        if (!file.commit())
            fail(file.errorString());
    }
    [[noreturn]] void fail(const QString &why) const
    {
        throw RewriteError(QStringLiteral("%1 cannot be written (%2)").arg(file.fileName(), why));
    }

private:
    QSaveFile file;
};

// Where the sidecar of the target goes; empty where the source's own serves both.
QString checkedSidecarPath(const RewriteOptions &options)
{
    const QString &target = options.targetPath;
    QString sidecar = sidecarPath(target);
    const QString ownSidecar = sidecarPath(options.sourcePath);
    const auto refuse = [](const QString &text) { throw RewriteError(text); };
    if (target.isEmpty())
        refuse(QStringLiteral("the name of the new file is empty"));
    if (QFileInfo(target).isDir())
        refuse(QStringLiteral("%1 is a folder, expected the name of a file").arg(target));
    if (isThere(target) && !QFileInfo(target).isFile())
        refuse(QStringLiteral("%1 is not a regular file").arg(target));
    if (isSameFile(target, options.sourcePath))
        refuse(QStringLiteral("%1 is the log itself, which is never overwritten").arg(target));
    if (isSameFile(target, ownSidecar))
        refuse(QStringLiteral("%1 is the log's sidecar, which is never overwritten").arg(target));
    if (isSameFile(target, sidecar))
        refuse(QStringLiteral("%1 is where the new file's own sidecar belongs, expected a name such as new.csv")
                   .arg(target));
    if (isThere(target) && !options.mayOverwrite)
        refuse(QStringLiteral("%1 is already there; --force overwrites it").arg(target));
    if (isSameFile(sidecar, options.sourcePath))
        refuse(QStringLiteral("the sidecar of %1 would be the log itself").arg(target));
    if (isThere(ownSidecar) && isSameFile(sidecar, ownSidecar))
        return {};
    if (isThere(sidecar) && !options.mayOverwrite)
        refuse(QStringLiteral("%1, which would be the sidecar of %2, is already there; --force overwrites it")
                   .arg(sidecar, target));
    return sidecar;
}

// The sidecar of the target, named as the target is: relative, if it is.
QString shownSidecarPath(const QString &target)
{
    return target.first(target.lastIndexOf(u'/') + 1) + QFileInfo(sidecarPath(target)).fileName();
}

QList<SidecarItem> sidecarItems(const Sidecar &source, const QString &sessionWord)
{
    QList<SidecarItem> items;
    const QString word = source.sessionWord.value_or(sessionWord);
    if (!word.isEmpty()) {
        SidecarItem event;
        event.id = QStringLiteral("Event");
        event.value = word;
        items.append(event);
    }
    return items + source.items;
}

} // namespace

RewriteSummary rewriteLog(const RewriteOptions &options, bool isBinary)
{
    const QString newSidecar = checkedSidecarPath(options);
    const Sidecar sidecar = readSidecar(sidecarPath(options.sourcePath));
    RewriteSummary summary;
    if (!sidecar.error.isEmpty())
        summary.remarks.append(QStringLiteral("the sidecar is broken in line %1 (%2); what comes before that is used")
                                   .arg(sidecar.errorLine)
                                   .arg(sidecar.error));

    TargetFile target(options.targetPath);
    BlockWriter file(target.device());
    RewriteJob job{options, sidecar, file, summary, {}};
    if (isBinary)
        rewriteBinaryLog(job);
    else
        rewriteExport(job);
    if (!file.flush())
        target.fail(file.errorText());

    const QList<SidecarItem> items = sidecarItems(sidecar, job.sessionWord);
    // An old sidecar would give its values to the new file, so that an empty one takes its place.
    if (newSidecar.isEmpty()) {
        summary.remarks.append(
            QStringLiteral("%1 serves both logs and is left as it is").arg(shownSidecarPath(options.targetPath)));
        target.commit();
        return summary;
    }
    if (items.isEmpty() && !isThere(newSidecar)) {
        target.commit();
        return summary;
    }
    TargetFile sidecarFile(newSidecar);
    BlockWriter sidecarWriter(sidecarFile.device());
    sidecarWriter.write(sidecarText(items));
    if (!sidecarWriter.flush())
        sidecarFile.fail(sidecarWriter.errorText());
    sidecarFile.commit();
    target.commit();
    summary.sidecarPath = shownSidecarPath(options.targetPath);
    summary.sidecarItems = items.size();
    return summary;
}

} // namespace Inspect

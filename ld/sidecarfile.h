#pragma once

// Internal: the file that a reader of sidecars is given, with the limits for such files.

#include "sdk/regularfile.h"

#include <QtCore/QFile>
#include <QtCore/QIODevice>

#include <algorithm>

/// A sidecar as QXmlStreamReader sees it: it ends after maxBytes, and in the middle of a token that goes on for
/// maxTokenBytes. Real sidecars have a few KiB. The limits are there because Qt's reader compares all attributes of a
/// tag with each other and holds some 60 bytes for each byte of nested tags.
///
/// The XML reader itself decides how much it takes at a time, since bytes that are not valid UTF-8 end its work when
/// they are taken: what it makes of a damaged file depends on that.
class SidecarFile : public QIODevice
{
public:
    /// Elements nested deeper are beyond the limits too; the XML reader's user counts them.
    static constexpr int maxDepth = 64;

    /// A file that cannot be opened counts as empty.
    explicit SidecarFile(const QString &path)
        : file(path)
    {
        (void)KOV::SDK::openRegularFile(file, ReadOnly | Text);
        open(ReadOnly | Unbuffered);
    }

    bool couldBeOpened() const { return file.isOpen(); }
    /// Before each token.
    void beginToken() { tokenBytes = 0; }
    /// Whether the file ends here because of a limit.
    bool isBeyondLimit() const { return tokenBytes >= maxTokenBytes || file.pos() >= maxBytes; }
    bool isSequential() const override { return true; }

protected:
    qint64 readData(char *data, qint64 maxSize) override
    {
        if (!file.isOpen() || isBeyondLimit())
            return 0;
        const qint64 count = file.read(data, std::min(maxSize, maxBytes - file.pos()));
        tokenBytes += count;
        return count;
    }
    qint64 writeData(const char * /*data*/, qint64 /*maxSize*/) override { return -1; }

private:
    static constexpr qint64 maxBytes = 1 << 20;
    static constexpr qint64 maxTokenBytes = 1 << 14;

    QFile file;
    qint64 tokenBytes = 0;
};

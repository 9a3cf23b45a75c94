#pragma once

// Who drove what, where and in which session: the texts in the head of every log.

#include <QtCore/QByteArray>

namespace samples {

struct LogInfo
{
    QByteArray venue;
    QByteArray vehicle = "Heron 3 Clubsport";
    QByteArray driver = "R. Lindqvist";
    QByteArray session = "Practice";
};

} // namespace samples

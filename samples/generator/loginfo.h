#pragma once

// Who drove what, where and in which session: the texts in the head of every log.

#include <QtCore/QByteArray>

#include <vector>

namespace samples {

struct LogInfo
{
    QByteArray venue;
    QByteArray vehicle = "Heron 3 Clubsport";
    QByteArray driver = "R. Lindqvist";
    QByteArray session = "Practice";
    std::vector<double> lineCrossings; ///< in seconds: beacon markers of a text export, if there are any
};

} // namespace samples

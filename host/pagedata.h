#pragma once

// The numbers of a page, for its script.

#include <QtCore/QByteArray>

namespace Host {

struct PageModel;
struct TrackPicture;

/// A JSON object that can be put between script tags, whatever texts it holds: page/page.js reads it.
///
/// Numbers are stored short: as whole multiples of the trace's last digit, each as the difference to the one before it
/// that is there, with null for "no value".
QByteArray pageData(const PageModel &model, const TrackPicture &picture);

} // namespace Host

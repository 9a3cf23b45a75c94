#pragma once

// A page of laps: one HTML file that needs nothing else. What it shows comes from pagemodel.h, how it looks and works
// from the files in page/.

#include <QtCore/QByteArray>
#include <QtCore/QString>

#include <vector>

namespace Host {

struct Log;
struct PageModel;

/// The page as UTF-8. An empty @p title is replaced by what the logs say.
///
/// Nothing that a log holds can become markup or script: texts are escaped, data is in a block that no text can
/// end, and the page's own policy lets the browser run the page's own scripts only and load nothing.
QByteArray pageHtml(const std::vector<Log> &logs, const PageModel &model, const QString &title);

} // namespace Host

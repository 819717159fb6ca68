#include "core/TemporaryDirectory.h"

#include <QDir>

namespace orvanta::core {

Url TemporaryDirectory::url() { return Url::fileUrl(QDir::tempPath().toStdString()); }

} // namespace orvanta::core

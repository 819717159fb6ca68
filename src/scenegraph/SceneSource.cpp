#include "scenegraph/SceneSource.h"

#include "import/SceneImporter.h"
#include "scenegraph/SceneNodeBuilder.h"

#include <QFile>

namespace orvanta::scenegraph {

std::optional<SceneSource> SceneSource::make(const core::Url& url) {
    if (!url.isFileUrl()) return std::nullopt;
    QFile file(QString::fromStdString(url.path()));
    if (!file.open(QIODevice::ReadOnly)) return std::nullopt;
    const QByteArray head = file.read(64);
    const auto format = import::SceneImporter::sniff(
        {reinterpret_cast<const std::uint8_t*>(head.constData()), static_cast<std::size_t>(head.size())});
    if (format == import::ModelFormat::unknown) return std::nullopt;
    return SceneSource(url.path());
}

std::optional<Scene> SceneSource::scene(const Vetting& vet) {
    auto imported = import::SceneImporter::importFile(path_);
    if (!imported) {
        lastError_ = imported.error();
        return std::nullopt;
    }
    if (vet) {
        if (auto refused = vet(imported.value())) {
            lastError_ = std::move(refused);
            return std::nullopt;
        }
    }
    lastError_.reset();
    return SceneNodeBuilder::build(std::make_shared<const import::ImportedScene>(std::move(imported).value()));
}

} // namespace orvanta::scenegraph

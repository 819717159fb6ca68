#include "render/MeshInstancing.h"

#include <cassert>

namespace orvanta::render {

MeshInstancing::MeshInstancing(std::shared_ptr<const import::InstanceTable> table, QQuick3DObject* parent)
    : QQuick3DInstancing(parent), table_(std::move(table)) {
    assert(table_);
    // Copies that are not opaque are blended, so the renderer must know before it draws them.
    for (const QVector4D& color : table_->colors)
        if (color.w() < 1.0f) {
            setHasTransparency(true);
            break;
        }
}

QByteArray MeshInstancing::getInstanceBuffer(int* instanceCount) {
    if (buffer_.isEmpty() && table_->size() > 0) {
        buffer_.resize(qsizetype(table_->size() * sizeof(InstanceTableEntry)));
        auto* entries = reinterpret_cast<InstanceTableEntry*>(buffer_.data());
        const QVector4D white(1.0f, 1.0f, 1.0f, 1.0f);
        for (std::size_t i = 0; i < table_->size(); ++i) {
            const QMatrix4x4& m = table_->transforms[i];
            entries[i] = {m.row(0), m.row(1), m.row(2), table_->colors.empty() ? white : table_->colors[i], {}};
        }
    }
    if (instanceCount) *instanceCount = static_cast<int>(table_->size());
    return buffer_;
}

} // namespace orvanta::render

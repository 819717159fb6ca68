#pragma once
// Small model files made in code, so tests never depend on files they do not write.

#include <QByteArray>

#include <string>

namespace orvanta::testing {

class TestModels {
public:
    // A binary glTF whose scene has `nodeCount` top-level nodes named "node0", "node1", ...,
    // each drawing the same one-triangle mesh, translated 1 m apart along X.
    static QByteArray glbWithNodes(int nodeCount);
    // Writes `bytes` to `path`, creating or replacing the file.
    static void write(const std::string& path, const QByteArray& bytes);
};

} // namespace orvanta::testing

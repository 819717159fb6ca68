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
    // A USDA dish of seeds: a PointInstancer scattering `instances` copies of one seed (a
    // sphere of 2 * segments * segments triangles, 6 mm long), each turned, scaled and coloured
    // differently, over a disc 20 cm across. The same arguments give the same bytes.
    static QByteArray seedScatterUsda(int instances, int segments);
    // Writes `bytes` to `path`, creating or replacing the file.
    static void write(const std::string& path, const QByteArray& bytes);
};

} // namespace orvanta::testing

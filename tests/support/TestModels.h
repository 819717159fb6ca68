#pragma once
// Small model files made in code, so tests never depend on files they do not write.

#include <QByteArray>
#include <QStringList>

#include <string>

namespace orvanta::testing {

class TestModels {
public:
    // A binary glTF whose scene has `nodeCount` top-level nodes named "node0", "node1", ...,
    // each drawing the same one-triangle mesh, translated 1 m apart along X; its JSON lists
    // `extensionsUsed` when given.
    static QByteArray glbWithNodes(int nodeCount, const QStringList& extensionsUsed = {});
    // A binary glTF of a JSON chunk and a BIN chunk, each padded to four bytes.
    static QByteArray glb(QByteArray json, QByteArray bin);
    // A USDA dish of seeds: a PointInstancer scattering `instances` copies of one seed (a
    // sphere of 2 * segments * segments triangles, 6 mm long), each turned, scaled and coloured
    // differently, over a disc 20 cm across. The same arguments give the same bytes.
    static QByteArray seedScatterUsda(int instances, int segments);
    // Writes `bytes` to `path`, creating or replacing the file.
    static void write(const std::string& path, const QByteArray& bytes);
};

} // namespace orvanta::testing

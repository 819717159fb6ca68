#pragma once
// The few shapes every procedural dish is made of, as import::ImportedMesh values in metres
// with normals and texture coordinates: surfaces of revolution (plates, bowls, cups, buns,
// glasses; cylinders, spheres and tori are made the same way) and flat quads (boxes, the cut
// faces of a cake slice). Front faces are counter-clockwise seen from outside.
// Thread: any; pure functions.

#include "import/ImportedScene.h"

#include <QMatrix4x4>
#include <QVector2D>

#include <string>
#include <vector>

namespace orvanta::demo {

class MeshShapes {
public:
    // Revolves `profile` about the y axis. Each point is (radius, height); the outside is on
    // the right of the profile walked from its first point to its last (walk a plate's
    // profile from the centre of its foot outwards and up, then back over the top). A point
    // given twice in a row makes a sharp crease there. `fromDegrees`..`toDegrees` is the part
    // of the turn swept (angle 0 faces +z, growing towards +x). u runs around the turn, v
    // along the profile's length.
    static import::ImportedMesh lathe(std::string name, const std::vector<QVector2D>& profile, int segments,
                                      float fromDegrees = 0.0f, float toDegrees = 360.0f);
    // A closed cylinder standing on y = 0.
    static import::ImportedMesh cylinder(std::string name, float radius, float height, int segments);
    // A sphere of `radius` centred on the origin.
    static import::ImportedMesh sphere(std::string name, float radius, int segments);
    // A ring about the y axis: `ringRadius` to the tube's centre, `tubeRadius` across the tube.
    static import::ImportedMesh torus(std::string name, float ringRadius, float tubeRadius, int segments);
    // An axis-aligned box centred on the origin.
    static import::ImportedMesh box(std::string name, const QVector3D& size);
    // The parallelogram corner, corner + edgeU, corner + edgeU + edgeV, corner + edgeV,
    // facing edgeU × edgeV.
    static import::ImportedMesh quad(std::string name, const QVector3D& corner, const QVector3D& edgeU,
                                     const QVector3D& edgeV);
    // `mesh` moved, turned and stretched by `transform` (normals follow).
    static import::ImportedMesh transformed(import::ImportedMesh mesh, const QMatrix4x4& transform);
    // Appends `part` to `mesh` (both single-material meshes).
    static void append(import::ImportedMesh& mesh, const import::ImportedMesh& part);
};

} // namespace orvanta::demo

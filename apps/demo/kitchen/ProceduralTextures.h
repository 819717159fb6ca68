#pragma once
// The pictures the dishes are painted with, generated from smooth value noise so that no
// image file ships with the project: a pizza's top (cheese in the middle, browned crust at
// the rim), wood grain for a serving board and a glazed plate with a coloured band at its
// rim. Each is laid out for the texture coordinates of the mesh that uses it (see
// MeshShapes: v runs along a lathe's profile). Encoded as PNG, as a model file holds them.
// Thread: any; pure functions (the same picture every time).

#include <QByteArray>
#include <QColor>
#include <QImage>

namespace orvanta::demo {

class ProceduralTextures {
public:
    static QImage pizzaTop(int size);
    static QImage woodGrain(int size);
    static QImage glaze(int size, QColor band);

    static QByteArray png(const QImage& image);
};

} // namespace orvanta::demo

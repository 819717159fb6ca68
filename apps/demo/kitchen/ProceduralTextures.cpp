#include "ProceduralTextures.h"

#include <QBuffer>

#include <algorithm>
#include <cmath>
#include <cstdint>

namespace orvanta::demo {

namespace {

// A repeatable pseudo-random value in [0, 1) for a lattice point.
float lattice(int x, int y, std::uint32_t seed) {
    std::uint32_t h = std::uint32_t(x) * 374761393u + std::uint32_t(y) * 668265263u + seed * 2246822519u;
    h = (h ^ (h >> 13)) * 1274126177u;
    return float((h ^ (h >> 16)) & 0xffffu) / 65536.0f;
}

// Smoothly interpolated lattice noise in [0, 1), wrapping every `period` cells so that the
// picture tiles around a lathe's seam.
float valueNoise(float x, float y, int period, std::uint32_t seed) {
    const int x0 = int(std::floor(x)), y0 = int(std::floor(y));
    const float fx = x - float(x0), fy = y - float(y0);
    const float sx = fx * fx * (3 - 2 * fx), sy = fy * fy * (3 - 2 * fy);
    auto at = [&](int i, int j) { return lattice(((i % period) + period) % period, ((j % period) + period) % period, seed); };
    const float top = at(x0, y0) + (at(x0 + 1, y0) - at(x0, y0)) * sx;
    const float bottom = at(x0, y0 + 1) + (at(x0 + 1, y0 + 1) - at(x0, y0 + 1)) * sx;
    return top + (bottom - top) * sy;
}

// Three octaves of value noise at a cell size of size/period pixels, in [0, 1).
float fractalNoise(int px, int py, int size, int period, std::uint32_t seed) {
    float sum = 0.0f, weight = 0.5f;
    for (int octave = 0; octave < 3; ++octave, period *= 2, weight *= 0.5f) {
        const float scale = float(period) / float(size);
        sum += weight * valueNoise(float(px) * scale, float(py) * scale, period, seed + std::uint32_t(octave));
    }
    return sum / 0.875f;
}

QColor mix(const QColor& a, const QColor& b, float t) {
    t = std::clamp(t, 0.0f, 1.0f);
    return QColor::fromRgbF(a.redF() + (b.redF() - a.redF()) * t, a.greenF() + (b.greenF() - a.greenF()) * t,
                            a.blueF() + (b.blueF() - a.blueF()) * t);
}

// Fills an image pixel by pixel; `v` is the texture coordinate of the row (1 at the top row).
template <class Paint>
QImage painted(int size, Paint paint) {
    QImage image(size, size, QImage::Format_RGB32);
    for (int y = 0; y < size; ++y) {
        const float v = 1.0f - (float(y) + 0.5f) / float(size);
        auto* row = reinterpret_cast<QRgb*>(image.scanLine(y));
        for (int x = 0; x < size; ++x) row[x] = paint(x, y, v).rgb();
    }
    return image;
}

} // namespace

QImage ProceduralTextures::pizzaTop(int size) {
    // The pizza's lathe profile runs from the centre of its underside out to the rim and back
    // over the top to the centre: from v = 0.62 on (the top inside the rim) it is cheese with
    // browned spots, before that dough darkening to crust towards the rim.
    const QColor dough(222, 184, 120), crust(176, 108, 48), cheese(246, 214, 120), browned(196, 128, 52);
    return painted(size, [&](int x, int y, float v) {
        const float grain = fractalNoise(x, y, size, 8, 11);
        if (v < 0.62f) return mix(dough, crust, std::clamp((v - 0.25f) * 3.0f, 0.0f, 1.0f) * grain * 1.4f);
        const float spots = fractalNoise(x, y, size, 16, 23);
        const QColor top = mix(cheese, browned, spots > 0.62f ? (spots - 0.62f) * 4.0f : 0.0f);
        return mix(crust, top, (v - 0.62f) * 12.0f);
    });
}

QImage ProceduralTextures::woodGrain(int size) {
    const QColor light(196, 150, 98), dark(128, 84, 46);
    return painted(size, [&](int x, int y, float) {
        const float warp = fractalNoise(x, y, size, 4, 5) * 6.0f;
        const float rings = 0.5f + 0.5f * std::sin(float(y) / float(size) * 40.0f + warp);
        const float fibre = fractalNoise(x * 8, y, size * 8, 32, 9);
        return mix(light, dark, 0.65f * rings + 0.35f * fibre);
    });
}

QImage ProceduralTextures::glaze(int size, QColor band) {
    // Along a plate's profile (see DishRecipes) v from 0.52 to 0.62 is the slope inside the
    // rim: the band is painted there.
    const QColor white(246, 244, 238), speck(236, 232, 224);
    return painted(size, [&](int x, int y, float v) {
        const QColor base = mix(white, speck, fractalNoise(x, y, size, 32, 17));
        const bool inBand = v > 0.52f && v < 0.62f;
        return inBand ? band : base;
    });
}

QByteArray ProceduralTextures::png(const QImage& image) {
    QByteArray bytes;
    QBuffer buffer(&bytes);
    buffer.open(QIODevice::WriteOnly);
    image.save(&buffer, "PNG");
    return bytes;
}

} // namespace orvanta::demo

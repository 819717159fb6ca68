#pragma once
// Typed reads of field values shared by the text reader, composition and scene extraction.
// Thread: pure functions, any thread.

#include "import/usd/UsdValue.h"

#include <cstddef>
#include <cstring>
#include <optional>
#include <span>
#include <string>
#include <vector>

namespace orvanta::import::usd {

class UsdStageValue {
public:
    // The strings of a StringArray or PathArray value, or nullptr.
    static const std::vector<std::string>* stringList(const Value* value) {
        if (!value) return nullptr;
        if (const auto* s = value->get<StringArray>()) return &s->values;
        return value->get<PathArray>();
    }

    // Names from a TokenArray, StringArray or PathArray value (variant set names, schemas).
    static std::vector<std::string> names(const Value* value) {
        std::vector<std::string> out;
        if (!value) return out;
        if (const auto* tokens = value->get<TokenArray>()) {
            for (const Token& t : *tokens) out.push_back(t.text);
        } else if (const auto* strings = stringList(value)) {
            out = *strings;
        }
        return out;
    }

    // The text of a Token, string or asset path value.
    static std::optional<std::string> text(const Value* value) {
        if (!value) return std::nullopt;
        if (const auto* t = value->get<Token>()) return t->text;
        if (const auto* s = value->get<std::string>()) return *s;
        if (const auto* a = value->get<AssetPath>()) return a->path;
        return std::nullopt;
    }

    // Element `i`, component `c` of a numeric value of any precision, or nullopt.
    static std::optional<double> component(const Value* value, std::size_t i, int c, int width) {
        if (!value) return std::nullopt;
        const std::size_t k = i * static_cast<std::size_t>(width) + static_cast<std::size_t>(c);
        const auto at = [&](const auto& values, int w) -> std::optional<double> {
            if (w != width || k >= values.size()) return std::nullopt;
            return static_cast<double>(values[k]);
        };
        if (const auto* f = value->get<FloatArray>()) {
            if (f->width != width || k >= f->componentCount()) return std::nullopt;
            return f->component(k);
        }
        if (const auto* d = value->get<DoubleArray>()) return at(d->values, d->width);
        if (const auto* n = value->get<IntArray>()) return std::visit([&](const auto& v) { return at(v, 1); }, n->values);
        if (const auto* b = value->get<bool>(); b && i == 0 && c == 0 && width == 1) return *b ? 1.0 : 0.0;
        return std::nullopt;
    }

    // A scalar number of any numeric type (the first element of an array).
    static std::optional<double> number(const Value* value) { return component(value, 0, 0, 1); }

    // The components of a FloatArray or DoubleArray value, read in place as floats: valid
    // while the value (and a crate file it views) lives, so large streams need no copy.
    class Floats {
    public:
        Floats() = default;
        explicit Floats(std::span<const float> values) : Floats(std::as_bytes(values), false) {}
        explicit Floats(std::span<const double> values) : Floats(std::as_bytes(values), true) {}
        // Little-endian float32 bytes at any alignment.
        explicit Floats(std::span<const std::uint8_t> stored) : Floats(std::as_bytes(stored), false) {}

        std::size_t size() const { return size_; }
        float operator[](std::size_t k) const {
            if (isDouble_) {
                double value;
                std::memcpy(&value, bytes_ + k * sizeof(double), sizeof(double));
                return static_cast<float>(value);
            }
            float value;
            std::memcpy(&value, bytes_ + k * sizeof(float), sizeof(float));
            return value;
        }

    private:
        Floats(std::span<const std::byte> bytes, bool isDouble)
            : bytes_(bytes.data()), size_(bytes.size() / (isDouble ? sizeof(double) : sizeof(float))), isDouble_(isDouble) {}

        const std::byte* bytes_ = nullptr;
        std::size_t size_ = 0;
        bool isDouble_ = false;
    };

    // The components of a FloatArray or DoubleArray value of `width`; empty for other values
    // or when the width differs.
    static Floats floats(const Value* value, int width) {
        if (!value) return {};
        if (const auto* f = value->get<FloatArray>(); f && f->width == width)
            return f->stored.empty() ? Floats(std::span<const float>(f->values)) : Floats(f->stored);
        if (const auto* d = value->get<DoubleArray>(); d && d->width == width) return Floats(std::span<const double>(d->values));
        return {};
    }

    // All components of a numeric value of `width` as doubles; empty when the width differs.
    static std::vector<double> numbers(const Value* value, int width) {
        std::vector<double> out;
        if (!value) return out;
        const auto copy = [&](const auto& values, int w) {
            if (w == width) out.assign(values.begin(), values.end());
        };
        if (const auto* f = value->get<FloatArray>(); f && f->width == width) {
            out.reserve(f->componentCount());
            for (std::size_t k = 0; k < f->componentCount(); ++k) out.push_back(f->component(k));
        } else if (const auto* d = value->get<DoubleArray>()) {
            copy(d->values, d->width);
        } else if (const auto* n = value->get<IntArray>()) {
            std::visit([&](const auto& v) { copy(v, 1); }, n->values);
        }
        return out;
    }
};

} // namespace orvanta::import::usd

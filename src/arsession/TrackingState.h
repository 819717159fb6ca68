#pragma once
// Quality of the camera's position tracking: not available, limited (with a reason), or
// normal. Objects can be placed reliably only while tracking is normal.
// Thread: a value type, usable on any thread.

#include <optional>
#include <string>
#include <string_view>

namespace orvanta::arsession {

class TrackingState {
public:
    enum class Kind { notAvailable, limited, normal };
    enum class Reason { initializing, excessiveMotion, insufficientFeatures, relocalizing };

    static constexpr TrackingState notAvailable() { return TrackingState(Kind::notAvailable, Reason::initializing); }
    static constexpr TrackingState limited(Reason reason) { return TrackingState(Kind::limited, reason); }
    static constexpr TrackingState normal() { return TrackingState(Kind::normal, Reason::initializing); }

    constexpr Kind kind() const { return kind_; }
    constexpr bool isNormal() const { return kind_ == Kind::normal; }
    // The reason of a limited state; none for the other two states.
    constexpr std::optional<Reason> reason() const {
        return kind_ == Kind::limited ? std::optional<Reason>(reason_) : std::nullopt;
    }

    // Readable rendering used in log lines and recordings: "notAvailable", "normal",
    // "limited(initializing)", "limited(excessiveMotion)", "limited(insufficientFeatures)",
    // "limited(relocalizing)".
    std::string description() const;
    // Reads a rendering made by description(); none for any other text.
    static std::optional<TrackingState> fromDescription(std::string_view text);

    friend constexpr bool operator==(const TrackingState&, const TrackingState&) = default;

private:
    constexpr TrackingState(Kind kind, Reason reason) : kind_(kind), reason_(reason) {}
    Kind kind_;
    Reason reason_; // meaningful only when kind_ is limited; fixed otherwise so == is exact
};

} // namespace orvanta::arsession

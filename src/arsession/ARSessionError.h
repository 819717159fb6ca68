#pragma once
// Errors a session reports to its delegate: core::Error values in the domain
// "ARErrorDomain". After a failure the session stops producing frames until run again.
// Thread: any.

#include "core/Error.h"

namespace orvanta::arsession {

class ARSessionError {
public:
    static constexpr const char* domain = "ARErrorDomain";

    enum Code : int {
        unsupportedConfiguration = 100,
        sensorUnavailable = 101,
        sensorFailed = 102,
        cameraUnauthorized = 103,
        worldTrackingFailed = 200,
    };

    // The error with `code` and its fixed message (for example "World tracking failed.").
    static core::Error make(Code code);
};

} // namespace orvanta::arsession

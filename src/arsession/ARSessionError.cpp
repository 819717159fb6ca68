#include "arsession/ARSessionError.h"

namespace orvanta::arsession {

core::Error ARSessionError::make(Code code) {
    const char* message = "";
    switch (code) {
    case unsupportedConfiguration: message = "The configuration is not supported on this device."; break;
    case sensorUnavailable: message = "A sensor required by the session is unavailable."; break;
    case sensorFailed: message = "A sensor failed to deliver the required input."; break;
    case cameraUnauthorized: message = "The app is not allowed to use the camera."; break;
    case worldTrackingFailed: message = "World tracking failed."; break;
    }
    return core::Error(domain, code, message);
}

} // namespace orvanta::arsession

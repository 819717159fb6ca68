#pragma once
// Asynchronous loading of a model file into an AR entity: the file is imported and held
// against the drawing budget on the background queue, and the entity is built and delivered
// on the main queue.
// Thread: subscribe on the main thread; the value or the import error arrives on it.

#include "core/Publisher.h"
#include "core/Url.h"
#include "reality/ModelEntity.h"

#include <memory>
#include <optional>
#include <string>

namespace orvanta {

class ModelEntityLoader {
public:
    // A cold stream: each subscription imports `contentsOf` once. `withName` names the
    // root entity (default: the file name).
    static core::Publisher<std::shared_ptr<reality::ModelEntity>> loadModelAsync(
        const core::Url& contentsOf, std::optional<std::string> withName = std::nullopt);
};

} // namespace orvanta

#include "models/ModelEntityLoader.h"

#include "core/Dispatch.h"
#include "import/SceneImporter.h"
#include "models/DrawingBudgetCheck.h"

namespace orvanta {

core::Publisher<std::shared_ptr<reality::ModelEntity>> ModelEntityLoader::loadModelAsync(
    const core::Url& contentsOf, std::optional<std::string> withName) {
    using Entity = std::shared_ptr<reality::ModelEntity>;
    return core::Publisher<Entity>([contentsOf, withName](const std::shared_ptr<core::Sink<Entity>>& sink) {
        auto main = core::Dispatch::main();
        core::Dispatch::background()->async([contentsOf, withName, sink, main] {
            if (sink->token()->isCancelled()) return;
            auto imported = import::SceneImporter::importFile(contentsOf.path());
            std::optional<core::Error> refused = imported ? DrawingBudgetCheck::check(imported.value()) : std::nullopt;
            main->async([imported = std::move(imported), refused = std::move(refused), contentsOf, withName, sink]() mutable {
                if (!imported) return sink->complete(core::Completion::failed(imported.error()));
                if (refused) return sink->complete(core::Completion::failed(*refused));
                auto scene = std::make_shared<const import::ImportedScene>(std::move(imported).value());
                auto entity = reality::ModelEntity::fromImportedScene(scene);
                entity->setName(withName.value_or(contentsOf.lastPathComponent()));
                sink->receive(entity);
                sink->complete(core::Completion::finished());
            });
        });
    });
}

} // namespace orvanta

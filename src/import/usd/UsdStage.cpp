#include "import/usd/UsdStage.h"

#include "import/ImportError.h"
#include "import/usd/CrateLazyArrays.h"
#include "import/usd/UsdStagePath.h"
#include "import/usd/UsdStageValue.h"

#include <algorithm>
#include <unordered_set>

namespace orvanta::import::usd {

namespace {

// The field `name` of `spec`, with a deferred crate array decoded in place first. The stage
// owns its layers through layers_; opinions only view their specs as const so that reading
// cannot change them otherwise.
const Value* decodedField(const Spec& spec, const std::string& name) {
    const Value* value = spec.field(name);
    if (const auto* deferred = value ? value->get<DeferredArray>() : nullptr) {
        Value decoded = deferred->source->decode(*deferred);
        *const_cast<Value*>(value) = std::move(decoded);
    }
    return value;
}

} // namespace

const Value* UsdStage::Property::field(const std::string& name) const {
    for (const Opinion& opinion : opinions) {
        if (const Value* value = decodedField(*opinion.spec, name)) return value;
    }
    return nullptr;
}

const Value* UsdStage::Property::value(int* layer) const {
    for (const Opinion& opinion : opinions) {
        if (const Value* value = decodedField(*opinion.spec, "default")) {
            if (layer) *layer = opinion.layer;
            return value->empty() ? nullptr : value;
        }
    }
    for (const Opinion& opinion : opinions) {
        const Value* field = opinion.spec->field("timeSamples");
        const TimeSamples* samples = field ? field->get<TimeSamples>() : nullptr;
        if (!samples || samples->samples.empty()) continue;
        const auto earliest = std::min_element(samples->samples.begin(), samples->samples.end(),
                                               [](const auto& a, const auto& b) { return a.first < b.first; });
        if (layer) *layer = opinion.layer;
        return earliest->second && !earliest->second->empty() ? earliest->second.get() : nullptr;
    }
    return nullptr;
}

const Value* UsdStage::Prim::field(const std::string& name) const {
    for (const Opinion& opinion : opinions) {
        if (const Value* value = decodedField(*opinion.spec, name)) return value;
    }
    return nullptr;
}

const UsdStage::Property* UsdStage::Prim::property(const std::string& name) const {
    const auto it = std::find_if(properties.begin(), properties.end(), [&](const Property& p) { return p.name == name; });
    return it == properties.end() ? nullptr : &*it;
}

// One place a prim's opinions come from: a layer's Spec at `path` in `layer`. Paths written in
// that layer at or below `mapFrom` stand for stage paths below `mapTo`.
struct UsdStage::Site {
    int layer = 0;
    std::string path;
    std::string mapFrom;
    std::string mapTo;
    const Spec* spec = nullptr;
};

class UsdStage::Composer {
public:
    Composer(UsdStageLayers& layers, std::vector<Prim>& prims) : layers_(layers), prims_(prims) {}

    std::optional<core::Error> run() {
        const Spec* rootSpec = layers_.layer(0).spec("/");
        if (!rootSpec) return importError(ImportErrorCode::malformedData, "the root layer has no pseudo-root");
        Prim root;
        root.path = "/";
        root.specifier = "def";
        root.opinions.push_back({0, rootSpec});
        prims_.push_back(std::move(root));
        // The root layer's sublayers are weaker layers of the same namespace, strongest first.
        std::vector<Site> rootSites{Site{0, "/", "/", "/", rootSpec}};
        std::vector<int> stack{0};
        if (!addSubLayers(0, rootSites, stack)) return error_;
        prims_.front().opinions.clear();
        for (const Site& site : rootSites) prims_.front().opinions.push_back({site.layer, site.spec});
        std::vector<Pending> pending;
        pending.push_back({0, std::move(rootSites), 0});
        while (!pending.empty() && !error_) {
            Pending next = std::move(pending.back());
            pending.pop_back();
            composeChildren(next, pending);
        }
        return error_;
    }

private:
    struct Pending {
        int prim;
        std::vector<Site> sites;
        int depth;
    };

    bool addSubLayers(int layer, std::vector<Site>& sites, std::vector<int>& stack) {
        const Spec* root = layers_.layer(layer).spec("/");
        const std::vector<std::string>* subLayers = root ? UsdStageValue::stringList(root->field("subLayers")) : nullptr;
        if (!subLayers) return true;
        if (static_cast<int>(stack.size()) > maxArcDepth)
            return fail(ImportErrorCode::limitExceeded, "sublayers nested more than " + std::to_string(maxArcDepth) + " deep");
        for (const std::string& assetPath : *subLayers) {
            auto loaded = layers_.load(layer, assetPath);
            if (!loaded) return fail(ImportErrorCode::malformedData, loaded.error().localizedDescription());
            if (!loaded.value()) continue;  // a missing layer contributes nothing
            const int sub = *loaded.value();
            if (std::find(stack.begin(), stack.end(), sub) != stack.end())
                return fail(ImportErrorCode::malformedData, "sublayer cycle through " + assetPath);
            const Spec* spec = layers_.layer(sub).spec("/");
            if (!spec) continue;
            if (std::none_of(sites.begin(), sites.end(), [&](const Site& s) { return s.layer == sub; }))
                sites.push_back(Site{sub, "/", "/", "/", spec});
            stack.push_back(sub);
            const bool ok = addSubLayers(sub, sites, stack);
            stack.pop_back();
            if (!ok) return false;
        }
        return true;
    }

    bool fail(ImportErrorCode code, std::string message) {
        if (!error_) error_ = importError(code, std::move(message));
        return false;
    }

    void composeChildren(const Pending& parent, std::vector<Pending>& pending) {
        std::vector<std::string> names;
        std::unordered_set<std::string> seen;
        for (const Site& site : parent.sites) {
            for (std::string& name : UsdStageValue::names(site.spec->field("primChildren"))) {
                if (seen.insert(name).second) names.push_back(std::move(name));
            }
        }
        if (!names.empty() && parent.depth >= maxNamespaceDepth) {
            fail(ImportErrorCode::limitExceeded, "prims nested more than " + std::to_string(maxNamespaceDepth) + " deep");
            return;
        }
        std::vector<Pending> children;
        for (const std::string& name : names) {
            const std::string stagePath = UsdStagePath::child(prims_[static_cast<std::size_t>(parent.prim)].path, name);
            std::vector<Site> sites;
            std::vector<Site> specialized;  // weaker than every other arc of the prim
            for (const Site& site : parent.sites) {
                const std::string path = UsdStagePath::child(site.path, name);
                const Spec* spec = layers_.layer(site.layer).spec(path);
                if (!spec || spec->type != SpecType::prim) continue;
                std::vector<std::string> chain;
                if (!expand(Site{site.layer, path, site.mapFrom, site.mapTo, spec}, stagePath, sites, 0, chain, &specialized)) return;
            }
            for (std::size_t i = 0; i < specialized.size(); ++i) {  // what a specialized prim brings is weak too
                std::vector<std::string> chain;
                if (!expand(specialized[i], stagePath, sites, 1, chain, &specialized)) return;
            }
            if (sites.empty()) continue;
            if (prims_.size() >= maxPrims) {
                fail(ImportErrorCode::limitExceeded, "more than " + std::to_string(maxPrims) + " prims");
                return;
            }
            const int index = static_cast<int>(prims_.size());
            prims_.push_back(makePrim(stagePath, name, parent.prim, sites));
            prims_[static_cast<std::size_t>(parent.prim)].children.push_back(index);
            children.push_back({index, std::move(sites), parent.depth + 1});
        }
        // Depth first, in file order.
        std::move(children.rbegin(), children.rend(), std::back_inserter(pending));
    }

    // Adds `site` to `out`, followed by what its inherits, variants, references and payloads
    // bring, strongest first; the sites it specializes go to `specialized`, to be added after
    // all others. `chain` holds the sites whose arcs are being followed.
    bool expand(const Site& site, const std::string& stagePath, std::vector<Site>& out, int arcDepth,
                std::vector<std::string>& chain, std::vector<Site>* specialized) {
        if (arcDepth > maxArcDepth)
            return fail(ImportErrorCode::limitExceeded, "references nested more than " + std::to_string(maxArcDepth) + " deep");
        const std::string key = std::to_string(site.layer) + site.path;
        if (std::find(chain.begin(), chain.end(), key) != chain.end())
            return fail(ImportErrorCode::malformedData,
                        "reference cycle through " + site.path + " in " + layers_.layer(site.layer).identifier);
        if (std::any_of(out.begin(), out.end(), [&](const Site& s) { return s.layer == site.layer && s.path == site.path; }))
            return true;
        if (out.size() >= maxSitesPerPrim)
            return fail(ImportErrorCode::limitExceeded, "more than " + std::to_string(maxSitesPerPrim) + " opinions on " + stagePath);
        out.push_back(site);
        chain.push_back(key);
        const bool ok = expandClasses(site, "inherits", stagePath, out, arcDepth, chain, specialized) &&
                        expandVariants(site, stagePath, out, arcDepth, chain, specialized) &&
                        expandReferences(site, "references", stagePath, out, arcDepth, chain, specialized) &&
                        expandReferences(site, "payload", stagePath, out, arcDepth, chain, specialized);
        chain.pop_back();
        if (ok && specialized) {
            std::vector<Site> specializes;
            if (!expandClasses(site, "specializes", stagePath, specializes, arcDepth, chain, nullptr)) return false;
            for (Site& s : specializes)
                if (std::none_of(specialized->begin(), specialized->end(), [&](const Site& t) { return t.layer == s.layer && t.path == s.path; }))
                    specialized->push_back(std::move(s));
        }
        return ok;
    }

    // The class prims `site` names in its `field` (inherits or specializes): prims of the
    // same layer, whose paths inside stand for the inheriting prim's. For specializes only
    // the named sites are gathered (their own arcs follow once they are added).
    bool expandClasses(const Site& site, const char* field, const std::string& stagePath, std::vector<Site>& out,
                       int arcDepth, std::vector<std::string>& chain, std::vector<Site>* specialized) {
        const std::vector<std::string>* paths = UsdStageValue::stringList(site.spec->field(field));
        if (!paths) return true;
        const Layer& layer = layers_.layer(site.layer);
        for (const std::string& path : *paths) {
            const Spec* spec = layer.spec(path);
            if (!spec || spec->type != SpecType::prim) continue;
            const Site classSite{site.layer, path, path, stagePath, spec};
            if (!specialized) {
                out.push_back(classSite);
                continue;
            }
            if (!expand(classSite, stagePath, out, arcDepth + 1, chain, specialized)) return false;
        }
        return true;
    }

    bool expandVariants(const Site& site, const std::string& stagePath, std::vector<Site>& out, int arcDepth,
                        std::vector<std::string>& chain, std::vector<Site>* specialized) {
        const Layer& layer = layers_.layer(site.layer);
        std::vector<std::string> sets = UsdStageValue::names(site.spec->field("variantSetNames"));
        for (std::string& set : UsdStageValue::names(site.spec->field("variantSetChildren"))) {
            if (std::find(sets.begin(), sets.end(), set) == sets.end()) sets.push_back(std::move(set));
        }
        for (const std::string& set : sets) {
            std::string choice = selection(set, out);
            if (choice.empty()) {
                const Spec* setSpec = layer.spec(UsdStagePath::variant(site.path, set, ""));
                const auto variants = UsdStageValue::names(setSpec ? setSpec->field("variantChildren") : nullptr);
                if (variants.empty()) continue;
                choice = variants.front();
            }
            const std::string path = UsdStagePath::variant(site.path, set, choice);
            const Spec* spec = layer.spec(path);
            if (spec && !expand(Site{site.layer, path, site.mapFrom, site.mapTo, spec}, stagePath, out, arcDepth + 1, chain, specialized))
                return false;
        }
        return true;
    }

    static std::string selection(const std::string& set, const std::vector<Site>& sites) {
        for (const Site& site : sites) {
            const Value* field = site.spec->field("variantSelection");
            const VariantSelection* selection = field ? field->get<VariantSelection>() : nullptr;
            if (!selection) continue;
            if (const auto it = selection->find(set); it != selection->end() && !it->second.empty()) return it->second;
        }
        return {};
    }

    bool expandReferences(const Site& site, const char* field, const std::string& stagePath, std::vector<Site>& out,
                          int arcDepth, std::vector<std::string>& chain, std::vector<Site>* specialized) {
        const Value* value = site.spec->field(field);
        const ReferenceArray* references = value ? value->get<ReferenceArray>() : nullptr;
        if (!references) return true;
        for (const Reference& reference : *references) {
            int target = site.layer;
            if (!reference.assetPath.empty()) {
                auto loaded = layers_.load(site.layer, reference.assetPath);
                if (!loaded) {
                    if (!error_) error_ = loaded.error();
                    return false;
                }
                if (!loaded.value()) continue;  // a missing layer contributes nothing
                target = *loaded.value();
            }
            const std::string primPath = reference.primPath.empty() ? defaultPrim(layers_.layer(target)) : reference.primPath;
            const Spec* spec = layers_.layer(target).spec(primPath);
            if (!spec || spec->type != SpecType::prim) continue;
            if (!expand(Site{target, primPath, primPath, stagePath, spec}, stagePath, out, arcDepth + 1, chain, specialized)) return false;
        }
        return true;
    }

    static std::string defaultPrim(const Layer& layer) {
        const Spec* root = layer.spec("/");
        if (!root) return {};
        if (const auto name = UsdStageValue::text(root->field("defaultPrim")); name && !name->empty())
            return name->front() == '/' ? *name : "/" + *name;
        const auto children = UsdStageValue::names(root->field("primChildren"));
        return children.empty() ? std::string() : "/" + children.front();
    }

    Prim makePrim(const std::string& path, const std::string& name, int parent, const std::vector<Site>& sites) const {
        Prim prim;
        prim.path = path;
        prim.name = name;
        prim.parent = parent;
        prim.specifier = "over";
        for (const Site& site : sites) prim.opinions.push_back({site.layer, site.spec});
        if (const auto typeName = UsdStageValue::text(prim.field("typeName"))) prim.typeName = *typeName;
        for (const Site& site : sites) {
            const auto specifier = UsdStageValue::text(site.spec->field("specifier"));
            if (specifier && *specifier != "over") {
                prim.specifier = *specifier;
                break;
            }
        }
        if (const Value* active = prim.field("active"); active && active->get<bool>()) prim.active = *active->get<bool>();

        std::unordered_set<std::string> seen;
        for (const Site& site : sites) {
            for (std::string& propertyName : UsdStageValue::names(site.spec->field("properties"))) {
                if (!seen.insert(propertyName).second) continue;
                prim.properties.push_back(makeProperty(std::move(propertyName), sites));
            }
        }
        return prim;
    }

    Property makeProperty(std::string name, const std::vector<Site>& sites) const {
        Property property;
        property.name = std::move(name);
        const Site* targetSite = nullptr;
        const std::vector<std::string>* targets = nullptr;
        for (const Site& site : sites) {
            const Spec* spec = layers_.layer(site.layer).spec(UsdStagePath::property(site.path, property.name));
            if (!spec) continue;
            property.opinions.push_back({site.layer, spec});
            if (targets) continue;
            targets = UsdStageValue::stringList(spec->field("connectionPaths"));
            if (!targets) targets = UsdStageValue::stringList(spec->field("targetPaths"));
            if (targets) targetSite = &site;
        }
        if (targets) {
            for (const std::string& target : *targets)
                property.targets.push_back(UsdStagePath::reroot(target, targetSite->mapFrom, targetSite->mapTo).value_or(target));
        }
        return property;
    }

    UsdStageLayers& layers_;
    std::vector<Prim>& prims_;
    std::optional<core::Error> error_;
};

core::Result<UsdStage> UsdStage::openPackage(std::span<const std::uint8_t> bytes, std::shared_ptr<const void> owner,
                                             const std::string& name) {
    auto layers = std::make_unique<UsdStageLayers>();
    if (auto root = layers->openPackage(bytes, std::move(owner), name); !root) return root.error();
    return compose(std::move(layers));
}

core::Result<UsdStage> UsdStage::openLayer(std::span<const std::uint8_t> bytes, const std::string& diskPath) {
    auto layers = std::make_unique<UsdStageLayers>();
    if (auto root = layers->openLayer(bytes, diskPath); !root) return root.error();
    return compose(std::move(layers));
}

core::Result<UsdStage> UsdStage::compose(std::unique_ptr<UsdStageLayers> layers) {
    UsdStage stage;
    stage.layers_ = std::move(layers);
    if (auto error = Composer(*stage.layers_, stage.prims_).run()) return *error;
    for (std::size_t i = 0; i < stage.prims_.size(); ++i) stage.byPath_.emplace(stage.prims_[i].path, static_cast<int>(i));
    for (const Prim& prim : stage.prims_) {
        for (const Property& property : prim.properties) {
            for (const Opinion& opinion : property.opinions) ++stage.propertyReaders_[opinion.spec];
        }
    }
    return stage;
}

void UsdStage::releaseArrays(int index) {
    for (const Property& property : prims_[static_cast<std::size_t>(index)].properties) {
        for (const Opinion& opinion : property.opinions) {
            const auto readers = propertyReaders_.find(opinion.spec);
            if (readers == propertyReaders_.end() || --readers->second > 0) continue;
            propertyReaders_.erase(readers);
            // Owned by the stage, as in decodedField.
            auto& fields = const_cast<Spec*>(opinion.spec)->fields;
            const auto value = fields.find("default");
            if (value == fields.end()) continue;
            const auto& data = value->second.data;
            if (std::holds_alternative<IntArray>(data) || std::holds_alternative<FloatArray>(data) ||
                std::holds_alternative<DoubleArray>(data) || std::holds_alternative<DeferredArray>(data))
                value->second = Value{};
        }
    }
}

const UsdStage::Prim* UsdStage::prim(const std::string& path) const {
    const auto it = byPath_.find(path);
    return it == byPath_.end() ? nullptr : &prims_[static_cast<std::size_t>(it->second)];
}

std::optional<UsdStageLayers::Asset> UsdStage::asset(int layer, const std::string& assetPath) const {
    return layers_->asset(layer, assetPath);
}

} // namespace orvanta::import::usd

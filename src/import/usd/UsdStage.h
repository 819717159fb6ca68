#pragma once
// A composed USD stage: the prims of a root layer and its sublayers with the opinions that
// inherits, variant sets, references, payloads and specializes bring in from the same or
// other layers, strongest first.
//
// The root layer's subLayers (their time offsets ignored) are weaker layers of the same
// namespace, in order, each followed by its own sublayers. For each prim, its sites (a layer
// and a prim path in it) are gathered strongest first: its own opinion, then the class prims
// it inherits, its selected variants (the authored selection, else the first variant), its
// references, then its payloads, each followed in turn by what they bring; the prims it
// specializes, with what they bring, come after all of those. Inherited and specialized
// classes are prims of the same layer. A
// reference names a prim of another layer (or, with no prim, that layer's default prim, else
// its first root prim), or a prim of the same layer. Children come from the children of all
// sites. Paths written inside a referenced prim (connections, relationship targets) are
// rewritten to the stage path of the referencing prim. A reference back to a site already
// being expanded is refused as a cycle; arc depth, namespace depth, site and prim counts are
// capped. Unresolvable references are left out, as USD does.
// A crate layer's large arrays stay encoded until a property's value is first read, and once
// a prim's output is built, releaseArrays frees the numeric arrays its properties hold, so a
// large layer is never decoded whole and never beside the whole output. Reading a value that
// turns out to be broken throws CrateFormatError.
// Thread: build on any thread; a built stage is read from one thread.

#include "core/Result.h"
#include "import/usd/UsdLayer.h"
#include "import/usd/UsdStageLayers.h"

#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <unordered_map>
#include <vector>

namespace orvanta::import::usd {

class UsdStage {
public:
    static constexpr int maxArcDepth = 32;
    static constexpr int maxNamespaceDepth = 128;
    static constexpr std::size_t maxSitesPerPrim = 256;
    static constexpr std::size_t maxPrims = 200000;

    // One layer's spec for a prim or property.
    struct Opinion {
        int layer = 0;
        const Spec* spec = nullptr;
    };

    struct Property {
        std::string name;
        std::vector<Opinion> opinions;    // strongest first
        std::vector<std::string> targets; // connections or relationship targets, as stage paths

        // The strongest opinion's value of field `name`, or nullptr. Thread: the reader's.
        const Value* field(const std::string& name) const;
        // The attribute's value: the strongest default, else the earliest time sample;
        // nullptr when none is authored or the strongest one is blocked (None).
        // `layer` receives the layer that wrote it (asset paths are read against it).
        // Thread: the reader's.
        const Value* value(int* layer = nullptr) const;
    };

    struct Prim {
        std::string path;
        std::string name;
        std::string typeName;
        std::string specifier;            // "def", "over" or "class": the strongest that is not "over"
        bool active = true;
        int parent = -1;
        std::vector<int> children;        // indices into prims()
        std::vector<Opinion> opinions;    // strongest first
        std::vector<Property> properties;

        // The strongest opinion's value of field `name`, or nullptr. Thread: the reader's.
        const Value* field(const std::string& name) const;
        // The property called `name`, or nullptr. Thread: the reader's.
        const Property* property(const std::string& name) const;
    };

    // Composes the stage of the package in `bytes` (its default layer).
    // Thread: any.
    static core::Result<UsdStage> openPackage(std::span<const std::uint8_t> bytes, std::shared_ptr<const void> owner,
                                              const std::string& name);
    // Composes the stage of the USDA or USDC layer in `bytes`, which must outlive the stage;
    // references resolve relative to the folder of `diskPath`. Thread: any.
    static core::Result<UsdStage> openLayer(std::span<const std::uint8_t> bytes, const std::string& diskPath);

    // prims()[0] is the pseudo-root "/". Thread: the reader's.
    const std::vector<Prim>& prims() const { return prims_; }
    // The prim at stage path `path`, or nullptr. Thread: the reader's.
    const Prim* prim(const std::string& path) const;
    // The root layer, which holds the stage metadata (upAxis, metersPerUnit, ...).
    // Thread: the reader's.
    const Layer& rootLayer() const { return layers_->layer(0); }
    // The bytes of the asset written at `assetPath` in layer `layer`, or nullopt.
    // Thread: the reader's.
    std::optional<UsdStageLayers::Asset> asset(int layer, const std::string& assetPath) const;

    // Tells the stage that prim `index` has been read for the last time: the int, float and
    // double array defaults of its property specs that no other prim reads any more are
    // freed and read as unauthored from then on. A spec that several prims share (through
    // references) is freed only when the last of them is released, so a prim never released
    // keeps its shared specs intact. Thread: the reader's.
    void releaseArrays(int index);

private:
    struct Site;
    class Composer;

    static core::Result<UsdStage> compose(std::unique_ptr<UsdStageLayers> layers);

    std::unique_ptr<UsdStageLayers> layers_;
    std::vector<Prim> prims_;
    std::unordered_map<std::string, int> byPath_;
    std::unordered_map<const Spec*, int> propertyReaders_;  // prims not yet released per property spec
};

} // namespace orvanta::import::usd

#pragma once
// The layers and packages behind one stage: opens referenced layers and assets by the asset
// paths written in other layers, and keeps every package, mapped file and parsed layer alive
// for as long as the stage lives.
//
// An asset path is read against the layer that wrote it: inside a package, relative to that
// layer's folder first and then to the package root (real packages write paths such as
// "1/texture.png" from a layer in folder "0/"); for a loose layer, relative to its folder on
// disk. A path that names a .usdz opens that package (in place when it is itself an entry of
// a package) and stands for its default layer; "outer.usdz[inner/file.png]" names an entry
// inside such a package. Layers are read by their bytes: USDA text, USDC crate or a package.
// Thread: one instance belongs to one import on one thread.

#include "core/Result.h"
#include "import/usd/UsdLayer.h"
#include "import/usd/UsdzArchive.h"

#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <vector>

namespace orvanta::import {
class FileBytes;
}

namespace orvanta::import::usd {

class UsdStageLayers {
public:
    // The stored bytes of an asset, with what keeps them alive.
    struct Asset {
        std::string key;                       // unique within the stage: the same key is the same file
        std::string path;                      // the entry path in its package, or the path on disk
        std::span<const std::uint8_t> bytes;
        std::shared_ptr<const void> owner;
    };

    // Most layers one stage may load, and most packages nested in one another.
    static constexpr std::size_t maxLayers = 256;
    static constexpr int maxPackageNesting = 8;

    // Opens the default layer of the package in `bytes` as layer 0. Thread: the owner's.
    core::Result<int> openPackage(std::span<const std::uint8_t> bytes, std::shared_ptr<const void> owner,
                                  const std::string& name);
    // Reads the layer in `bytes` (USDA or USDC) as layer 0; its references resolve relative
    // to the folder of `diskPath`. Thread: the owner's.
    core::Result<int> openLayer(std::span<const std::uint8_t> bytes, const std::string& diskPath);

    // The layer written at `assetPath` from layer `from`, loaded once. nullopt when no such
    // file exists; an error when it exists but is no readable layer. Thread: the owner's.
    core::Result<std::optional<int>> load(int from, const std::string& assetPath);
    // The bytes of the asset written at `assetPath` from layer `from`, or nullopt.
    // Thread: the owner's.
    std::optional<Asset> asset(int from, const std::string& assetPath);

    // Thread: the owner's.
    const Layer& layer(int index) const { return loaded_[static_cast<std::size_t>(index)]->layer; }
    std::size_t layerCount() const { return loaded_.size(); }

private:
    // Where a file is: an entry of packages_[package], or a path on disk (package -1).
    struct Location {
        int package = -1;
        std::string path;
        std::string key() const { return std::to_string(package) + ":" + path; }
    };
    struct Loaded {
        Layer layer;
        Location location;
    };

    std::optional<Location> locate(const Location& from, const std::string& assetPath, int nesting);
    std::optional<Asset> read(const Location& location);
    core::Result<int> openNestedPackage(const Asset& bytes, int nesting);
    core::Result<int> loadAt(const Location& location, int nesting);

    std::vector<std::unique_ptr<UsdzArchive>> packages_;
    std::vector<int> packageNesting_;
    std::map<std::string, int> packageByKey_;
    std::vector<std::unique_ptr<Loaded>> loaded_;
    std::map<std::string, int> layerByKey_;
    std::map<std::string, std::shared_ptr<const FileBytes>> diskFiles_;
};

} // namespace orvanta::import::usd

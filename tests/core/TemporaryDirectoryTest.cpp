#include "core/TemporaryDirectory.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>
#include <optional>

#include <sys/stat.h>
#include <unistd.h>

using namespace orvanta::core;

namespace {

// Sets TMPDIR (or clears it, for nullopt) for the lifetime of the object.
class TmpdirOverride {
public:
    explicit TmpdirOverride(const std::optional<std::string>& value) {
        if (const char* old = std::getenv("TMPDIR")) saved_ = old;
        if (value) setenv("TMPDIR", value->c_str(), 1);
        else unsetenv("TMPDIR");
    }
    ~TmpdirOverride() {
        if (saved_) setenv("TMPDIR", saved_->c_str(), 1);
        else unsetenv("TMPDIR");
    }

private:
    std::optional<std::string> saved_;
};

std::string kitDirectoryName() { return "OrvantaARFoodSDK-" + std::to_string(::geteuid()); }

void expectRefused(const Result<Url>& result, const std::string& messagePart) {
    if (result) {
        ADD_FAILURE() << "accepted " << result->path();
        return;
    }
    EXPECT_EQ(result.error().domain(), "TemporaryDirectoryError");
    EXPECT_NE(result.error().localizedDescription().find(messagePart), std::string::npos)
        << result.error().localizedDescription();
}

} // namespace

TEST(TemporaryDirectory, WithTmpdirTheKitKeepsAPrivateFolderInsideItAndAnUnusableOneIsAnError) {
    QTemporaryDir dir;
    const std::string base = dir.path().toStdString();
    QFile(dir.filePath("plain")).open(QIODevice::WriteOnly);
    {
        TmpdirOverride tmpdir(base);
        const auto url = TemporaryDirectory::url();
        ASSERT_TRUE(url) << url.error().localizedDescription();
        EXPECT_EQ(url->path(), base + "/" + kitDirectoryName());
        struct stat info {};
        ASSERT_EQ(::lstat(url->path().c_str(), &info), 0);
        EXPECT_EQ(info.st_mode & 0777, 0700u);
    }
    const struct {
        std::string value;
        const char* message;
    } unusable[] = {{base + "/missing", "named by TMPDIR is unusable: No such file or directory"},
                    {base + "/plain", "named by TMPDIR is not a directory"}};
    for (const auto& c : unusable) {
        SCOPED_TRACE(c.value);
        TmpdirOverride tmpdir(c.value);
        expectRefused(TemporaryDirectory::url(), c.message);
    }
}

TEST(TemporaryDirectory, ClearingEmptiesTheKitsFolderAndLeavesEverythingBesideIt) {
    QTemporaryDir shared, elsewhere;
    TmpdirOverride tmpdir(shared.path().toStdString());
    const auto write = [](const QString& path) {
        QFile file(path);
        ASSERT_TRUE(file.open(QIODevice::WriteOnly)) << path.toStdString();
        file.write("someone's");
    };
    // Other people's files in the shared temporary directory, and one the kit's folder links to.
    write(shared.filePath("notes.txt"));
    write(shared.filePath(".hidden"));
    ASSERT_TRUE(QDir(shared.path()).mkdir("project"));
    write(shared.filePath("project/draft.glb"));
    write(elsewhere.filePath("target.usdz"));

    const QDir kit(QString::fromStdString(TemporaryDirectory::url().value().path()));
    write(kit.filePath("dish.usdz"));
    write(kit.filePath(".dish.usdz.part"));
    ASSERT_TRUE(kit.mkdir("pictures"));
    write(kit.filePath("pictures/Shared picture.png"));
    ASSERT_TRUE(QFile::link(elsewhere.filePath("target.usdz"), kit.filePath("linked.usdz")));

    const auto removed = TemporaryDirectory::clear();
    ASSERT_TRUE(removed) << removed.error().localizedDescription();
    EXPECT_EQ(removed.value(), 4);
    EXPECT_TRUE(kit.exists());
    EXPECT_TRUE(kit.entryList(QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot).isEmpty());
    for (const char* kept : {"notes.txt", ".hidden", "project/draft.glb"})
        EXPECT_TRUE(QFileInfo::exists(shared.filePath(kept))) << kept;
    EXPECT_TRUE(QFileInfo::exists(elsewhere.filePath("target.usdz")));
}

TEST(TemporaryDirectory, WithoutTmpdirTheKitKeepsAPrivateDirectoryInTheSharedFolder) {
    TmpdirOverride tmpdir(std::nullopt);
    const auto url = TemporaryDirectory::url();
    ASSERT_TRUE(url) << url.error().localizedDescription();
    EXPECT_EQ(url->path(), std::string(P_tmpdir) + "/" + kitDirectoryName());
    struct stat info {};
    ASSERT_EQ(::lstat(url->path().c_str(), &info), 0);
    EXPECT_TRUE(S_ISDIR(info.st_mode));
    EXPECT_EQ(info.st_mode & 0777, 0700u);
    EXPECT_EQ(info.st_uid, ::geteuid());
}

TEST(TemporaryDirectory, APlantedOrSharedDirectoryIsRefused) {
    QTemporaryDir shared, elsewhere;
    const std::string base = shared.path().toStdString();
    const std::string path = base + "/" + kitDirectoryName();

    const auto made = TemporaryDirectory::privateDirectoryUnder(base);
    ASSERT_TRUE(made) << made.error().localizedDescription();
    EXPECT_EQ(made->path(), path);

    ASSERT_EQ(::chmod(path.c_str(), 0777), 0);
    expectRefused(TemporaryDirectory::privateDirectoryUnder(base), "is open to other users (mode 777)");

    ASSERT_TRUE(QDir(QString::fromStdString(path)).removeRecursively());
    ASSERT_EQ(::symlink(elsewhere.path().toLocal8Bit().constData(), path.c_str()), 0);
    expectRefused(TemporaryDirectory::privateDirectoryUnder(base), "is not a plain directory");
    ASSERT_EQ(::unlink(path.c_str()), 0);

    if (::geteuid() != 0) GTEST_SKIP() << "making a directory owned by another user needs root";
    ASSERT_EQ(::mkdir(path.c_str(), 0700), 0);
    ASSERT_EQ(::chown(path.c_str(), 65534, 65534), 0);
    expectRefused(TemporaryDirectory::privateDirectoryUnder(base), "belongs to another user (uid 65534)");
}

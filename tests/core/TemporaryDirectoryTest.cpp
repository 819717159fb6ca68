// The kit's private temporary folder, and the URLs it and the downloads are named by.
#include "core/TemporaryDirectory.h"
#include "core/Url.h"
#include "support/ScopedTmpdir.h"
#include "support/TestModels.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <gtest/gtest.h>

#include <cstdio>

#include <sys/stat.h>
#include <unistd.h>

using namespace orvanta::core;
using orvanta::testing::ScopedTmpdir;

namespace {

const std::string kitDirectoryName = "OrvantaARFoodSDK-" + std::to_string(::geteuid());

// `result` is the private folder `path`: a real directory of this user's, closed to others;
// or, with `path` empty, a refusal whose message holds `message`.
void expectOutcome(const Result<Url>& result, const std::string& path, const std::string& message = {}) {
    if (!path.empty()) {
        ASSERT_TRUE(result) << result.error().localizedDescription();
        EXPECT_EQ(result->path(), path);
        struct stat info {};
        ASSERT_EQ(::lstat(path.c_str(), &info), 0);
        EXPECT_TRUE(S_ISDIR(info.st_mode));
        EXPECT_EQ(info.st_mode & 0777, 0700u);
        EXPECT_EQ(info.st_uid, ::geteuid());
        return;
    }
    ASSERT_FALSE(result) << "accepted " << result->path();
    EXPECT_EQ(result.error().domain(), "TemporaryDirectoryError");
    EXPECT_NE(result.error().localizedDescription().find(message), std::string::npos) << result.error().localizedDescription();
}

} // namespace

// With TMPDIR the kit keeps its folder inside it, without it in the system's shared folder;
// a TMPDIR that cannot hold it is an error.
TEST(TemporaryDirectory, TheKitsFolderFollowsTmpdir) {
    QTemporaryDir dir;
    const std::string base = dir.path().toStdString();
    QFile(dir.filePath("plain")).open(QIODevice::WriteOnly);
    const struct {
        std::string tmpdir, path, message; // an empty TMPDIR counts as unset
    } cases[] = {
        {base, base + "/" + kitDirectoryName, ""},
        {"", std::string(P_tmpdir) + "/" + kitDirectoryName, ""},
        {base + "/missing", "", "named by TMPDIR is unusable: No such file or directory"},
        {base + "/plain", "", "named by TMPDIR is not a directory"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.tmpdir);
        ScopedTmpdir tmpdir(QString::fromStdString(c.tmpdir));
        expectOutcome(TemporaryDirectory::url(), c.path, c.message);
    }
}

TEST(TemporaryDirectory, ClearingEmptiesTheKitsFolderAndLeavesEverythingBesideIt) {
    QTemporaryDir shared, elsewhere;
    ScopedTmpdir tmpdir(shared.path());
    const auto write = [](const QString& path) { orvanta::testing::TestModels::write(path.toStdString(), "someone's"); };
    // Other people's files in the shared temporary directory, and one the kit's folder links to.
    ASSERT_TRUE(QDir(shared.path()).mkdir("project"));
    for (const char* name : {"notes.txt", ".hidden", "project/draft.glb"}) write(shared.filePath(name));
    write(elsewhere.filePath("target.usdz"));

    const QDir kit(QString::fromStdString(TemporaryDirectory::url().value().path()));
    ASSERT_TRUE(kit.mkdir("pictures"));
    for (const char* name : {"dish.usdz", ".dish.usdz.part", "pictures/Shared picture.png"}) write(kit.filePath(name));
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

TEST(TemporaryDirectory, APlantedOrSharedDirectoryIsRefused) {
    QTemporaryDir shared, elsewhere;
    const std::string base = shared.path().toStdString();
    const std::string path = base + "/" + kitDirectoryName;
    expectOutcome(TemporaryDirectory::privateDirectoryUnder(base), path);

    ASSERT_EQ(::chmod(path.c_str(), 0777), 0);
    expectOutcome(TemporaryDirectory::privateDirectoryUnder(base), "", "is open to other users (mode 777)");

    ASSERT_TRUE(QDir(QString::fromStdString(path)).removeRecursively());
    ASSERT_EQ(::symlink(elsewhere.path().toLocal8Bit().constData(), path.c_str()), 0);
    expectOutcome(TemporaryDirectory::privateDirectoryUnder(base), "", "is not a plain directory");
    ASSERT_EQ(::unlink(path.c_str()), 0);

    if (::geteuid() != 0) GTEST_SKIP() << "making a directory owned by another user needs root";
    ASSERT_EQ(::mkdir(path.c_str(), 0700), 0);
    ASSERT_EQ(::chown(path.c_str(), 65534, 65534), 0);
    expectOutcome(TemporaryDirectory::privateDirectoryUnder(base), "", "belongs to another user (uid 65534)");
}

TEST(Url, RejectsEmptyAndMalformedText) {
    EXPECT_FALSE(Url::fromString(""));
    EXPECT_FALSE(Url::fromString("http://[::1"));
    EXPECT_FALSE(Url::fromString("http://exa mple.com/a.usdz"));
    EXPECT_TRUE(Url::fromString("https://cdn.example.com/dishes/pasta.usdz"));
    EXPECT_TRUE(Url::fromString("pasta.usdz")); // relative references are URLs too
}

TEST(Url, LastPathComponentIgnoresQueryAndFragmentAndDecodes) {
    EXPECT_EQ(Url::fromString("https://h/a/b/pasta.usdz?v=2#top")->lastPathComponent(), "pasta.usdz");
    EXPECT_EQ(Url::fromString("https://h/a/tomato%20soup.usdz")->lastPathComponent(), "tomato soup.usdz");
    EXPECT_EQ(Url::fromString("https://h/a/dir/")->lastPathComponent(), "dir");
    EXPECT_EQ(Url::fromString("https://h/")->lastPathComponent(), "/");
    EXPECT_EQ(Url::fromString("https://h")->lastPathComponent(), "");
    EXPECT_EQ(Url::fromString("https://h/a/..%2Fescape")->lastPathComponent(), "../escape");
}

TEST(Url, FileUrlsRoundTripTheirPath) {
    const Url file = Url::fileUrl("/tmp/dir with space/x.usdz");
    EXPECT_TRUE(file.isFileUrl());
    EXPECT_EQ(file.path(), "/tmp/dir with space/x.usdz");
    EXPECT_EQ(Url::fileUrl("/tmp").appendingPathComponent("a b.usdz").path(), "/tmp/a b.usdz");
    EXPECT_FALSE(Url::fromString("https://h/x.usdz")->isFileUrl());
}

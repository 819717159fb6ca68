#include "MenuFile.h"

#include "JsonLines.h"
#include "core/Url.h"
#include "import/SceneImporter.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QRegularExpression>
#include <QUrl>

#include <map>
#include <optional>

namespace orvanta::demo {

namespace {

// Whether the file at `path` is a glTF JSON file (whatever its name says).
bool isGltfJson(const QString& path) {
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) return false;
    const QByteArray head = file.read(64);
    return import::SceneImporter::sniff({reinterpret_cast<const std::uint8_t*>(head.constData()),
                                         static_cast<std::size_t>(head.size())}) == import::ModelFormat::gltf;
}

// The files a glTF JSON file takes its buffers and images from; data: URIs are inside it.
QStringList externalFilesOf(const QString& gltfPath) {
    QFile file(gltfPath);
    if (!file.open(QIODevice::ReadOnly)) return {};
    const QJsonObject gltf = QJsonDocument::fromJson(file.readAll()).object();
    QStringList files;
    for (const char* list : {"buffers", "images"})
        for (const QJsonValue& entry : gltf.value(QLatin1String(list)).toArray()) {
            const QString uri = entry.toObject().value("uri").toString();
            if (!uri.isEmpty() && !uri.startsWith("data:")) files << QUrl::fromPercentEncoding(uri.toUtf8());
        }
    return files;
}

// The reading of one file: its name for messages, its folder for local links, its lines,
// and the problems and warnings found so far.
class Reader {
public:
    Reader(const QString& path, const QByteArray& text)
        : name_(path), folder_(QFileInfo(path).absoluteDir()), lines_(text) {}

    void problem(const QString& jsonPath, const QString& what) { problems_ << line(jsonPath, what); }
    void warning(const QString& jsonPath, const QString& what) { warnings_ << line(jsonPath, what); }
    const QStringList& problems() const { return problems_; }
    const QStringList& warnings() const { return warnings_; }

    // The member `field` of `object` at `path` as text; nothing, after noting why, when it is
    // missing or not a string.
    std::optional<QString> text(const QJsonObject& object, const QString& path, const QString& context, const QString& field) {
        const QString where = path + '/' + field;
        if (!object.contains(field)) problem(where, context + QStringLiteral("\"%1\" is missing").arg(field));
        else if (!object[field].isString()) problem(where, context + QStringLiteral("\"%1\" must be a string").arg(field));
        else return object[field].toString();
        return std::nullopt;
    }

    // A link as the menu keeps it: with a scheme or empty, as written; otherwise a path
    // relative to the file's folder, as a file: URL.
    QString link(const QString& written) const {
        static const QRegularExpression scheme(QStringLiteral("^[A-Za-z][A-Za-z0-9+.-]*:"));
        if (written.isEmpty() || scheme.match(written).hasMatch()) return written;
        return QUrl::fromLocalFile(QDir::cleanPath(folder_.absoluteFilePath(written))).toString(QUrl::FullyEncoded);
    }

private:
    QString line(const QString& jsonPath, const QString& what) const {
        return QStringLiteral("%1:%2: %3").arg(name_).arg(lines_.lineOf(jsonPath)).arg(what);
    }

    QString name_;
    QDir folder_;
    JsonLines lines_;
    QStringList problems_;
    QStringList warnings_;
};

// The dishes of one menu as they are read: what each link leads to is checked here.
class DishReader {
public:
    explicit DishReader(Reader& reader) : reader_(reader) {}

    void read(qsizetype index, const QJsonValue& value) {
        const QString path = QStringLiteral("/dishes/%1").arg(index);
        const QString context = QStringLiteral("dish %1: ").arg(index + 1);
        if (!value.isObject()) return reader_.problem(path, context + "must be an object");
        const QJsonObject dish = value.toObject();
        const auto name = reader_.text(dish, path, context, "name");
        const auto picture = reader_.text(dish, path, context, "picture");
        const auto model = reader_.text(dish, path, context, "model");
        std::optional<double> price;
        if (!dish.contains("price")) reader_.problem(path + "/price", context + "\"price\" is missing");
        else if (!dish["price"].isDouble()) reader_.problem(path + "/price", context + "\"price\" must be a number");
        else price = dish["price"].toDouble();
        if (picture) checkPicture(reader_.link(*picture), path + "/picture", context);
        if (model) checkModel(reader_.link(*model), path + "/model", context, int(index + 1));
        if (name && picture && model && price) foods_.emplace_back(*name, reader_.link(*picture), reader_.link(*model), *price);
    }

    std::vector<Food> foods() && { return std::move(foods_); }

private:
    void checkPicture(const QString& link, const QString& path, const QString& context) {
        const QUrl url(link);
        if (url.isLocalFile() && !QFileInfo(url.toLocalFile()).isFile())
            reader_.warning(path, context + QStringLiteral("\"picture\" %1 does not exist: the menu shows a spinner in its place")
                                                .arg(url.toLocalFile()));
    }

    void checkModel(const QString& link, const QString& path, const QString& context, int number) {
        const QUrl url(link);
        if (url.isLocalFile()) {
            const QString file = url.toLocalFile();
            if (!QFileInfo(file).isFile()) return reader_.problem(path, context + QStringLiteral("\"model\" %1 does not exist").arg(file));
            if (isGltfJson(file)) {
                if (const QStringList external = externalFilesOf(file); !external.isEmpty()) {
                    const QFileInfo info(file);
                    return reader_.problem(
                        path, context + QStringLiteral("\"model\" %1 keeps its data in %2, but the kit downloads one file per "
                                                       "dish: make it one GLB or USDZ file, for example with "
                                                       "orvanta-convert %1 %3.glb")
                                            .arg(info.fileName(), external.join(", "), info.completeBaseName()));
                }
            }
        }
        const auto parsed = core::Url::fromString(link.toStdString());
        const QString cacheName = parsed ? QString::fromStdString(parsed->lastPathComponent()) : QString();
        if (cacheName.isEmpty()) return;
        const auto [first, isNew] = modelNames_.emplace(cacheName, number);
        if (!isNew)
            reader_.warning(path, context + QStringLiteral("\"model\" has the file name %1, as dish %2's has: the kit caches "
                                                           "models by file name, so dish %3 would show dish %2's model; give "
                                                           "every model a file name of its own")
                                                .arg(cacheName)
                                                .arg(first->second)
                                                .arg(number));
    }

    Reader& reader_;
    std::vector<Food> foods_;
    std::map<QString, int> modelNames_; // the file name of each model seen, and its dish's number
};

} // namespace

core::Result<MenuFile::Menu> MenuFile::read(const QString& path) {
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return core::Error(errorDomain, 2, QStringLiteral("%1: cannot be read: %2").arg(path, file.errorString()).toStdString());
    const QByteArray text = file.readAll();
    QJsonParseError parseError;
    const QJsonDocument document = QJsonDocument::fromJson(text, &parseError);
    if (parseError.error != QJsonParseError::NoError)
        return core::Error(errorDomain, 1,
                           QStringLiteral("%1:%2: not valid JSON: %3")
                               .arg(path)
                               .arg(JsonLines::lineAt(text, parseError.offset))
                               .arg(parseError.errorString())
                               .toStdString());

    Reader reader(path, text);
    std::optional<QString> name;
    DishReader dishes(reader);
    if (!document.isObject()) {
        reader.problem({}, "the menu must be a JSON object");
    } else {
        const QJsonObject root = document.object();
        name = reader.text(root, {}, {}, "name");
        if (!root.contains("dishes")) reader.problem("/dishes", "\"dishes\" is missing");
        else if (!root["dishes"].isArray()) reader.problem("/dishes", "\"dishes\" must be a list");
        else if (root["dishes"].toArray().isEmpty()) reader.problem("/dishes", "\"dishes\" must list at least one dish");
        else {
            const QJsonArray list = root["dishes"].toArray();
            for (qsizetype i = 0; i < list.size(); ++i) dishes.read(i, list[i]);
        }
    }
    if (!reader.problems().isEmpty()) return core::Error(errorDomain, 1, reader.problems().join('\n').toStdString());
    return Menu{Restaurant(*name, std::move(dishes).foods()), reader.warnings()};
}

} // namespace orvanta::demo

#include "MenuFile.h"

#include "JsonLines.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QRegularExpression>
#include <QUrl>

#include <optional>

namespace orvanta::demo {

namespace {

// The reading of one file: its name for messages, its folder for local links, its lines.
class Reader {
public:
    Reader(const QString& path, const QByteArray& text)
        : name_(path), folder_(QFileInfo(path).absoluteDir()), lines_(text) {}

    core::Error error(const QString& jsonPath, const QString& what) const {
        return core::Error(MenuFile::errorDomain, 1,
                           QStringLiteral("%1:%2: %3").arg(name_).arg(lines_.lineOf(jsonPath)).arg(what).toStdString());
    }

    // The member `field` of `object` at `path` as text, or why it is not.
    std::optional<core::Error> text(const QJsonObject& object, const QString& path, const QString& context,
                                    const QString& field, QString& out) const {
        const QString where = path + '/' + field;
        if (!object.contains(field)) return error(where, context + QStringLiteral("\"%1\" is missing").arg(field));
        if (!object[field].isString()) return error(where, context + QStringLiteral("\"%1\" must be a string").arg(field));
        out = object[field].toString();
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
    QString name_;
    QDir folder_;
    JsonLines lines_;
};

} // namespace

core::Result<Restaurant> MenuFile::read(const QString& path) {
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

    const Reader reader(path, text);
    if (!document.isObject()) return reader.error({}, "the menu must be a JSON object");
    const QJsonObject root = document.object();
    QString name;
    if (auto failure = reader.text(root, {}, {}, "name", name)) return *failure;
    if (!root.contains("dishes")) return reader.error("/dishes", "\"dishes\" is missing");
    if (!root["dishes"].isArray()) return reader.error("/dishes", "\"dishes\" must be a list");
    const QJsonArray dishes = root["dishes"].toArray();
    if (dishes.isEmpty()) return reader.error("/dishes", "\"dishes\" must list at least one dish");

    std::vector<Food> foods;
    for (qsizetype i = 0; i < dishes.size(); ++i) {
        const QString dishPath = QStringLiteral("/dishes/%1").arg(i);
        const QString context = QStringLiteral("dish %1: ").arg(i + 1);
        if (!dishes[i].isObject()) return reader.error(dishPath, context + "must be an object");
        const QJsonObject dish = dishes[i].toObject();
        QString dishName, picture, model;
        for (auto [field, out] : {std::pair{"name", &dishName}, {"picture", &picture}, {"model", &model}})
            if (auto failure = reader.text(dish, dishPath, context, field, *out)) return *failure;
        if (!dish.contains("price")) return reader.error(dishPath + "/price", context + "\"price\" is missing");
        if (!dish["price"].isDouble()) return reader.error(dishPath + "/price", context + "\"price\" must be a number");
        foods.emplace_back(dishName, reader.link(picture), reader.link(model), dish["price"].toDouble());
    }
    return Restaurant(name, std::move(foods));
}

} // namespace orvanta::demo

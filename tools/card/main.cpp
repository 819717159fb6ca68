// orvanta-card OUT.pdf|OUT.png [--card TEXT] [--title TEXT] [--page A4|Letter] [--text TEXT]
// Writes the printable table card at true size: a PDF page (A4 unless --page says Letter) or
// the same page as a PNG at 300 dpi. Under the card the page says, in small print, the size
// the card must print at, and carries a 10 cm measuring bar to check that the printer did not
// scale it. A QR card's code holds --text (the menu's link, say). Exit status 0 when the file
// is written; 1 with the reason on standard error when the card does not fit the page or the
// file cannot be written; 2 for bad arguments.

#include "arsession/camera/CardArtwork.h"
#include "arsession/camera/TableCard.h"
#include "common/ToolCommandLine.h"

#include <QCommandLineParser>
#include <QFileInfo>
#include <QGuiApplication>
#include <QPageSize>
#include <QPainter>
#include <QPdfWriter>

#include <algorithm>
#include <cmath>
#include <cstdio>

namespace {

using orvanta::arsession::camera::CardArtwork;
using orvanta::arsession::camera::TableCard;

constexpr double pngDpi = 300.0;
constexpr double pdfDpi = 1200.0;
constexpr double mmPerInch = 25.4;
// What printers leave blank around the page, and the space between the page's parts (mm).
constexpr double printerMargin = 6.0;
constexpr double gap = 3.0;
constexpr double titleHeight = 9.0;
constexpr double noteLineHeight = 3.2;
constexpr double barLength = 100.0;
constexpr double barHeight = 3.0;
constexpr double barLabelHeight = 3.5;

int fail(const std::string& message, int status = 1) {
    std::fprintf(stderr, "orvanta-card: %s\n", message.c_str());
    return status;
}

std::string millimetres(double mm) {
    char text[32];
    std::snprintf(text, sizeof text, "%.1f", mm);
    std::string s = text;
    if (s.ends_with(".0")) s.resize(s.size() - 2);
    return s;
}

// Where the page's parts go, in millimetres from the page's top-left corner.
struct PageLayout {
    QSizeF page;
    QString title;
    QRectF code;     // the card's printed code
    double noteTop = 0.0;
    QPointF barOrigin; // the measuring bar's top-left corner
    QSizeF needed;   // everything inside the printer margins

    PageLayout(const TableCard& card, QSizeF pageSize, QString pageTitle) : page(pageSize), title(std::move(pageTitle)) {
        const QSizeF size = card.size() * 1000.0;
        const double margin = CardArtwork::margin(card) * 1000.0;
        const double top = title.isEmpty() ? 0.0 : titleHeight + gap;
        const double belowCard = gap + 2 * noteLineHeight + gap + barHeight + barLabelHeight;
        needed = QSizeF(std::max(size.width() + 2 * margin, barLength), top + size.height() + 2 * margin + belowCard);
        const QPointF origin((page.width() - needed.width()) / 2 + (needed.width() - size.width()) / 2,
                             (page.height() - needed.height()) / 2 + top + margin);
        code = QRectF(origin, size);
        noteTop = code.bottom() + margin + gap;
        barOrigin = QPointF((page.width() - barLength) / 2, noteTop + 2 * noteLineHeight + gap);
    }

    // Millimetres too wide and too tall for the page inside its printer margins (0 when it fits).
    QSizeF overflow() const {
        return QSizeF(std::max(0.0, needed.width() - (page.width() - 2 * printerMargin)),
                      std::max(0.0, needed.height() - (page.height() - 2 * printerMargin)));
    }
};

// Paints the page on a device of `dotsPerMm`, whose top-left pixel is the page's corner.
void paintPage(QPainter& painter, const PageLayout& layout, const QImage& artwork, const TableCard& card,
               double dotsPerMm) {
    const auto at = [dotsPerMm](double mm) { return mm * dotsPerMm; };
    const auto rect = [&](double x, double y, double w, double h) { return QRectF(at(x), at(y), at(w), at(h)); };
    painter.fillRect(rect(0, 0, layout.page.width(), layout.page.height()), Qt::white);
    painter.setPen(Qt::black);

    QFont font("DejaVu Sans");
    if (!layout.title.isEmpty()) {
        font.setBold(true);
        font.setPixelSize(int(std::lround(at(titleHeight * 0.6))));
        painter.setFont(font);
        painter.drawText(rect(0, layout.code.top() - CardArtwork::margin(card) * 1000.0 - gap - titleHeight,
                              layout.page.width(), titleHeight),
                         Qt::AlignCenter, layout.title);
        font.setBold(false);
    }

    painter.drawImage(rect(layout.code.x(), layout.code.y(), layout.code.width(), layout.code.height()), artwork);

    const QSizeF size = card.size() * 1000.0;
    font.setPixelSize(int(std::lround(at(noteLineHeight * 0.7))));
    painter.setFont(font);
    const QString sizeText = QString::fromStdString(millimetres(size.width()) + " × " + millimetres(size.height()) + " mm");
    painter.drawText(rect(0, layout.noteTop, layout.page.width(), noteLineHeight), Qt::AlignCenter,
                     "Print at actual size (100 %, no fit to page): the card must measure " + sizeText + ".");
    painter.drawText(rect(0, layout.noteTop + noteLineHeight, layout.page.width(), noteLineHeight), Qt::AlignCenter,
                     "The bar below must measure exactly 10 cm.   Card: " + QString::fromStdString(card.text()));

    // The bar: ten centimetre cells, alternately black and white, inside a black outline.
    const QPointF bar = layout.barOrigin;
    for (int cm = 0; cm < 10; cm += 2) painter.fillRect(rect(bar.x() + cm * 10.0, bar.y(), 10.0, barHeight), Qt::black);
    painter.setPen(QPen(Qt::black, at(0.2)));
    painter.drawRect(rect(bar.x(), bar.y(), barLength, barHeight));
    font.setPixelSize(int(std::lround(at(barLabelHeight * 0.7))));
    painter.setFont(font);
    painter.drawText(rect(bar.x() - 5.0, bar.y() + barHeight, 10.0, barLabelHeight), Qt::AlignCenter, "0");
    painter.drawText(rect(bar.x() + barLength - 5.0, bar.y() + barHeight, 10.0, barLabelHeight), Qt::AlignCenter, "10");
    painter.drawText(rect(bar.x(), bar.y() + barHeight, barLength, barLabelHeight), Qt::AlignCenter, "10 cm");
}

struct Options {
    QString output;
    TableCard card;
    QString title;
    QPageSize page{QPageSize::A4};
    std::string qrText;
};

int writeCard(const Options& options) {
    const PageLayout layout(options.card, options.page.size(QPageSize::Millimeter), options.title);
    const QSizeF over = layout.overflow();
    if (over.width() > 0 || over.height() > 0) {
        std::string by;
        if (over.width() > 0) by = millimetres(over.width()) + " mm too wide";
        if (over.height() > 0) by += (by.empty() ? "" : " and ") + millimetres(over.height()) + " mm too tall";
        return fail("the card " + options.card.text() + " does not fit on " + options.page.name().toStdString() +
                    ": it is " + by + " (the card, its margin, the note and the measuring bar need " +
                    millimetres(layout.needed.width()) + " × " + millimetres(layout.needed.height()) +
                    " mm; the page has " + millimetres(options.page.size(QPageSize::Millimeter).width() - 2 * printerMargin) +
                    " × " + millimetres(options.page.size(QPageSize::Millimeter).height() - 2 * printerMargin) +
                    " mm inside its margins). Choose a smaller card or a larger page.");
    }
    const bool pdf = QFileInfo(options.output).suffix().toLower() == "pdf";
    const double dpi = pdf ? pdfDpi : pngDpi;
    // The code is drawn at the PNG's resolution; the PDF scales it to the card's exact size.
    const auto artwork = CardArtwork::draw(options.card, pngDpi / mmPerInch * 1000.0, options.qrText);
    if (!artwork) return fail(artwork.error().localizedDescription());

    if (pdf) {
        QPdfWriter writer(options.output);
        writer.setPageSize(options.page);
        writer.setPageMargins(QMarginsF());
        writer.setResolution(int(dpi));
        writer.setTitle(options.title.isEmpty() ? "Table card" : options.title);
        writer.setCreator("orvanta-card");
        QPainter painter;
        if (!painter.begin(&writer)) return fail("cannot write " + options.output.toStdString());
        paintPage(painter, layout, artwork.value(), options.card, dpi / mmPerInch);
        if (!painter.end()) return fail("cannot write " + options.output.toStdString());
        return 0;
    }
    const QSize pixels = options.page.sizePixels(int(dpi));
    QImage page(pixels, QImage::Format_RGB32);
    {
        QPainter painter(&page);
        paintPage(painter, layout, artwork.value(), options.card, dpi / mmPerInch);
    }
    QImage grey = page.convertToFormat(QImage::Format_Grayscale8);
    const int dotsPerMetre = int(std::lround(dpi / mmPerInch * 1000.0));
    grey.setDotsPerMeterX(dotsPerMetre);
    grey.setDotsPerMeterY(dotsPerMetre);
    if (!grey.save(options.output, "PNG")) return fail("cannot write " + options.output.toStdString());
    return 0;
}

} // namespace

int main(int argc, char** argv) {
    // Pages are painted without a screen.
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM")) qputenv("QT_QPA_PLATFORM", "offscreen");
    QGuiApplication app(argc, argv);

    QCommandLineParser parser;
    orvanta::tools::ToolCommandLine::prepare(parser, "orvanta-card",
                                             "Writes the printable table card at true size: a PDF page, or a PNG at 300 dpi.");
    parser.addPositionalArgument("OUT", "the file to write, ending in .pdf or .png");
    parser.addOption({"card", QString("the card (default ") + TableCard::defaultText + ")", "TEXT"});
    parser.addOption({"title", "a title printed above the card", "TEXT"});
    parser.addOption({"page", "the paper: A4 (default) or Letter", "A4|Letter"});
    parser.addOption({"text", "what a qr: card's code holds, for example the menu's link", "TEXT"});
    if (!parser.parse(app.arguments())) return fail(parser.errorText().toStdString(), 2);
    if (parser.isSet("help")) parser.showHelp(0);
    if (parser.isSet("version")) parser.showVersion();

    const QStringList positional = parser.positionalArguments();
    if (positional.size() != 1) return fail("give one output file, OUT.pdf or OUT.png (see --help)", 2);
    Options options;
    options.output = positional[0];
    const QString suffix = QFileInfo(options.output).suffix().toLower();
    if (suffix != "pdf" && suffix != "png") return fail("the output must end in .pdf or .png", 2);
    const auto card = TableCard::parse(parser.isSet("card") ? parser.value("card").toStdString() : TableCard::defaultText);
    if (!card) return fail(card.error().localizedDescription(), 2);
    options.card = card.value();
    options.title = parser.value("title");
    const QString page = parser.value("page").toLower();
    if (page == "letter") options.page = QPageSize(QPageSize::Letter);
    else if (!page.isEmpty() && page != "a4") return fail("--page takes A4 or Letter", 2);
    options.qrText = parser.value("text").toStdString();
    if (card->kind == TableCard::Kind::qr && options.qrText.empty())
        return fail("a qr: card needs --text, the text its code holds (the menu's link, say)", 2);
    return writeCard(options);
}

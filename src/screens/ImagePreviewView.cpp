#include "screens/ImagePreviewView.h"

#include "core/Log.h"
#include "ui/ActivityViewController.h"
#include <OrvantaARFoodSDK/Application.h>
#include <OrvantaARFoodSDK/NavigationController.h>
#include "ui/PhotoAlbum.h"
#include <OrvantaARFoodSDK/Window.h>
#include <OrvantaARFoodSDK/WindowScene.h>

#include <QVariant>

#include <memory>

namespace orvanta {

ImagePreviewView::ImagePreviewView(QObject* parent) : QObject(parent) {}

void ImagePreviewView::setImagePreview(ImagePreview* preview) {
    if (imagePreview_ == preview) return;
    imagePreview_ = preview;
    emit imagePreviewChanged();
}

void ImagePreviewView::done() { emit dismissRequested(); }

void ImagePreviewView::saveImageToPhotos() {
    QPointer<ImagePreviewView> weak(this);
    ui::PhotoAlbum::writeImage(imagePreview_ ? imagePreview_->image() : QImage(), [weak](core::Result<QString> written) {
        if (!weak) return;
        if (written)
            weak->setReport(true, tr("Saved to Photos."));
        else
            weak->setReport(false, tr("The photo could not be saved to Photos."));
    });
    core::Log::print("Image saved to Photos!");
}

void ImagePreviewView::setReport(bool succeeded, const QString& sentence) {
    report_ = sentence;
    reportIsFailure_ = !succeeded;
    emit reported();
}

void ImagePreviewView::shareImage() {
    const QImage image = imagePreview_ ? imagePreview_->image() : QImage();
    auto sheet = std::make_unique<ui::ActivityViewController>(std::vector<QVariant>{QVariant::fromValue(image)});
    QPointer<ImagePreviewView> weak(this);
    sheet->setReportHandler([weak](bool succeeded, const QString& sentence) {
        if (weak) weak->setReport(succeeded, sentence);
    });
    ui::ViewController* top = getTopViewController(ui::Application::shared());
    if (!top) return;
    top->present(sheet.release(), true); // the presenter owns what it presents
}

ui::ViewController* ImagePreviewView::getTopViewController(const ui::Application& application) {
    const auto& scenes = application.connectedScenes();
    if (scenes.empty()) return nullptr;
    const auto* windowScene = qobject_cast<const ui::WindowScene*>(scenes.front());
    if (!windowScene || windowScene->windows().empty()) return nullptr;
    ui::ViewController* current = windowScene->windows().front()->rootViewController();
    if (!current) return nullptr;
    while (current->presentedViewController()) current = current->presentedViewController();
    if (auto* navigation = qobject_cast<ui::NavigationController*>(current)) return navigation->topViewController();
    return current;
}

} // namespace orvanta

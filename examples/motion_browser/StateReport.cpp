#include "StateReport.h"

#include "ClipModel.h"
#include "ClipView.h"

#include <QtCore/QEvent>
#include <QtCore/QJsonArray>
#include <QtCore/QJsonDocument>
#include <QtCore/QJsonObject>
#include <QtCore/QSaveFile>

#include <array>
#include <chrono>

namespace {

/// Several changes at once make one report.
constexpr std::chrono::milliseconds Delay(20);

constexpr std::array NamedParts{"search", "catalogue", "playlist", "log"};

QJsonArray placeOf(const QWidget* widget, const QRect& part)
{
    const double ratio = widget->devicePixelRatioF();
    const QPoint corner = widget->mapToGlobal(part.topLeft());
    return {corner.x() * ratio, corner.y() * ratio, part.width() * ratio, part.height() * ratio};
}

QJsonArray clipsOf(const ClipView* view)
{
    QJsonArray clips;
    for (int row = 0; row < view->model()->rowCount(); ++row) {
        const QModelIndex index = view->model()->index(row, 0);
        const QRect rect = view->visualRect(index);
        QJsonObject clip{{QStringLiteral("name"), index.data().toString()}};
        if (view->viewport()->rect().contains(rect)) {
            clip.insert(QStringLiteral("place"), placeOf(view->viewport(), rect));
        }
        clips.append(clip);
    }
    return clips;
}

} // namespace

StateReport::StateReport(const QString& path, QWidget* window)
    : QObject(window)
    , mPath(path)
    , mWindow(window)
{
    mTimer.setSingleShot(true);
    mTimer.setInterval(Delay);
    connect(&mTimer, &QTimer::timeout, this, &StateReport::write);
    window->installEventFilter(this);
    // Whatever changes is painted.
    for (const ClipView* view : window->findChildren<ClipView*>()) {
        view->viewport()->installEventFilter(this);
    }
}

bool StateReport::eventFilter(QObject* watched, QEvent* event)
{
    switch (event->type()) {
    case QEvent::Paint:
    case QEvent::Move:
    case QEvent::Resize:
        mTimer.start();
        break;
    default:
        break;
    }
    return QObject::eventFilter(watched, event);
}

void StateReport::write() const
{
    QJsonObject report;
    QJsonObject places;
    for (const char* name : NamedParts) {
        const auto* part = mWindow->findChild<QWidget*>(QLatin1String(name));
        places.insert(QLatin1String(name), placeOf(part, part->rect()));
    }
    report.insert(QStringLiteral("places"), places);
    for (const ClipView* view : mWindow->findChildren<ClipView*>()) {
        report.insert(view->objectName(), clipsOf(view));
    }
    // Whoever reads it sees the old report or the new one, never a part.
    QSaveFile file(mPath);
    if (file.open(QIODevice::WriteOnly)) {
        file.write(QJsonDocument(report).toJson());
        file.commit();
    }
}

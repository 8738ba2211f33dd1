#pragma once

#include <QtCore/QObject>
#include <QtCore/QTimer>

class ClipView;
class QWidget;

/// Keeps a JSON file that tells what the window shows and where, for scripts that drive the program by
/// pointer and keyboard: "places" has the named parts of the window, "catalogue" and "playlist" the clips
/// that are there, each with its place while it is in sight. Places are x, y, width and height on the screen,
/// in its own pixels.
class StateReport : public QObject
{
    Q_OBJECT

public:
    StateReport(const QString& path, QWidget* window);

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    void write() const;

    const QString mPath;
    QWidget* const mWindow;
    QTimer mTimer;
};

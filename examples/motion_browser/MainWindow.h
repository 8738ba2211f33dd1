#pragma once

#include "ClipFinder.h"

#include <QtWidgets/QWidget>

class ClipModel;
class ClipView;
class QFocusFrame;
class QLabel;
class QLineEdit;
class QPushButton;
class VelorLog;

/// The catalogue with its search field on the left, the playlist on the right, the log below both.
class MainWindow : public QWidget
{
    Q_OBJECT

public:
    /// `log` must outlive the window.
    MainWindow(ClipFinder finder, VelorLog* log);
    ~MainWindow() override;

private:
    QLayout* makeSearchLine();
    QWidget* makeCataloguePanel();
    QWidget* makePlaylistPanel();
    QWidget* makeLogPanel(VelorLog* log);

    void search();
    /// Goes from the search to its first hit, if there is one.
    void enterCatalogue();
    void showFocus(QWidget* before, QWidget* now);
    void addSelection();
    void removeSelection();
    void updateButtons();

    ClipFinder mFinder;
    ClipModel* mFound;
    ClipModel* mPlaylist;
    ClipView* mFoundView = nullptr;
    ClipView* mPlaylistView = nullptr;
    QFocusFrame* mFocusFrame;
    QLineEdit* mSearch = nullptr;
    QLabel* mFoundTitle = nullptr;
    QLabel* mPlaylistTitle = nullptr;
    QPushButton* mAdd = nullptr;
    QPushButton* mRemove = nullptr;
};

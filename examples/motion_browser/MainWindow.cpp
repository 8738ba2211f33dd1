#include "MainWindow.h"

#include "ClipDelegate.h"
#include "ClipModel.h"
#include "ClipPicture.h"
#include "ClipView.h"
#include "LogPane.h"

#include <QtGui/QShortcut>
#include <QtWidgets/QApplication>
#include <QtWidgets/QFocusFrame>
#include <QtWidgets/QHBoxLayout>
#include <QtWidgets/QLabel>
#include <QtWidgets/QLineEdit>
#include <QtWidgets/QPushButton>
#include <QtWidgets/QSplitter>
#include <QtWidgets/QVBoxLayout>

namespace {

constexpr QSize SmallestSize(560, 420);
constexpr QSize UsualSize(820, 640);
constexpr QSize SmallestList(220, 120);
constexpr int LogHeight = 110;
constexpr int IconSide = 64;
constexpr int FocusFrameWidth = 3;

ClipView* makeView(ClipModel* model, const QString& accessibleName)
{
    auto* view = new ClipView;
    view->setModel(model);
    view->setItemDelegate(new ClipDelegate(view));
    view->setAccessibleName(accessibleName);
    view->setMinimumSize(SmallestList);
    return view;
}

/// A title whose mnemonic leads to `view`.
QLabel* makeTitle(QWidget* view)
{
    auto* title = new QLabel;
    title->setBuddy(view);
    return title;
}

QVBoxLayout* makePanelLayout(QWidget* panel)
{
    auto* layout = new QVBoxLayout(panel);
    // Room for the focus frame around what stands at the edges.
    layout->setContentsMargins(FocusFrameWidth, FocusFrameWidth, FocusFrameWidth, FocusFrameWidth);
    return layout;
}

} // namespace

MainWindow::MainWindow(ClipFinder finder, VelorLog* log)
    : mFinder(std::move(finder))
    , mFound(new ClipModel(ClipModel::Catalogue, this))
    , mPlaylist(new ClipModel(ClipModel::Playlist, this))
    , mFocusFrame(new QFocusFrame(this))
{
    setWindowTitle(tr("Motion Browser"));
    setWindowIcon(clipPicture(windowTitle(), IconSide, 1.0, palette()));
    setMinimumSize(SmallestSize);

    auto* lists = new QSplitter;
    lists->setChildrenCollapsible(false);
    lists->addWidget(makeCataloguePanel());
    lists->addWidget(makePlaylistPanel());
    lists->setSizes({UsualSize.width(), UsualSize.width()});

    auto* all = new QSplitter(Qt::Vertical);
    all->setChildrenCollapsible(false);
    all->addWidget(lists);
    all->addWidget(makeLogPanel(log));
    all->setStretchFactor(0, 1);
    all->setSizes({UsualSize.height(), LogHeight});

    auto* layout = new QVBoxLayout(this);
    layout->addLayout(makeSearchLine());
    layout->addWidget(all);
    setTabOrder(mSearch, mFoundView);
    connect(qApp, &QApplication::focusChanged, this, &MainWindow::showFocus);
    resize(UsualSize);
    search();
    updateButtons();
    mSearch->setFocus();
}

/// The focus may still move from child to child while these are deleted, when nothing of this class is left.
MainWindow::~MainWindow() { disconnect(qApp, nullptr, this, nullptr); }

QLayout* MainWindow::makeSearchLine()
{
    mSearch = new QLineEdit;
    mSearch->setPlaceholderText(tr("Tags or names, such as: walk, happy"));
    mSearch->setClearButtonEnabled(true);
    mSearch->setDragEnabled(true);
    auto* title = makeTitle(mSearch);
    title->setText(tr("&Search"));
    connect(mSearch, &QLineEdit::textChanged, this, &MainWindow::search);
    connect(mSearch, &QLineEdit::returnPressed, this, &MainWindow::enterCatalogue);

    auto* line = new QHBoxLayout;
    line->setContentsMargins(FocusFrameWidth, 0, FocusFrameWidth, 0);
    line->addWidget(title);
    line->addWidget(mSearch);
    return line;
}

QWidget* MainWindow::makeCataloguePanel()
{
    mFoundView = makeView(mFound, tr("Catalogue"));
    mFoundTitle = makeTitle(mFoundView);
    mAdd = new QPushButton(tr("&Add to playlist"));

    connect(mFoundView, &QListView::activated, this, &MainWindow::addSelection);
    connect(mFoundView->selectionModel(), &QItemSelectionModel::selectionChanged, this,
            &MainWindow::updateButtons);
    connect(mAdd, &QPushButton::clicked, this, &MainWindow::addSelection);

    auto* panel = new QWidget;
    auto* layout = makePanelLayout(panel);
    layout->addWidget(mFoundTitle);
    layout->addWidget(mFoundView);
    layout->addWidget(mAdd, 0, Qt::AlignRight);
    return panel;
}

QWidget* MainWindow::makePlaylistPanel()
{
    mPlaylistView = makeView(mPlaylist, tr("Playlist"));
    mPlaylistView->setHint(tr("Drop clips here,\nor press Enter in the catalogue"));
    mPlaylistView->setAcceptDrops(true);
    mPlaylistView->setDropIndicatorShown(true);
    mPlaylistTitle = makeTitle(mPlaylistView);
    mRemove = new QPushButton(tr("&Remove"));

    connect(mPlaylist, &ClipModel::rowsInserted, this, [this](const QModelIndex&, int first, int last) {
        mPlaylistView->selectOnly(first, last - first + 1);
        updateButtons();
    });
    connect(mPlaylist, &ClipModel::rowsRemoved, this, &MainWindow::updateButtons);
    connect(mPlaylistView->selectionModel(), &QItemSelectionModel::selectionChanged, this,
            &MainWindow::updateButtons);
    connect(mRemove, &QPushButton::clicked, this, &MainWindow::removeSelection);
    connect(new QShortcut(QKeySequence::Delete, mPlaylistView, nullptr, nullptr, Qt::WidgetShortcut),
            &QShortcut::activated, this, &MainWindow::removeSelection);

    auto* panel = new QWidget;
    auto* layout = makePanelLayout(panel);
    layout->addWidget(mPlaylistTitle);
    layout->addWidget(mPlaylistView);
    layout->addWidget(mRemove, 0, Qt::AlignRight);
    return panel;
}

QWidget* MainWindow::makeLogPanel(VelorLog* log)
{
    auto* pane = new LogPane(log);
    auto* title = makeTitle(pane);
    title->setText(tr("&Log"));

    auto* panel = new QWidget;
    auto* layout = makePanelLayout(panel);
    layout->addWidget(title);
    layout->addWidget(pane);
    return panel;
}

void MainWindow::search()
{
    const QStringList words = ClipFinder::wordsOf(mSearch->text());
    mFound->setClips(mFinder.find(words));
    const QString all = clipCount(mFinder.clips().size());
    if (mFinder.clips().isEmpty()) {
        mFoundTitle->setText(tr("&Catalogue: %1").arg(all));
        mFoundView->setHint(tr("This catalogue holds no clips"));
    } else if (words.isEmpty()) {
        mFoundTitle->setText(tr("&Catalogue: all %1").arg(all));
        mFoundView->setHint({});
    } else {
        mFoundTitle->setText(tr("&Catalogue: %1 of %2").arg(mFound->rowCount()).arg(all));
        mFoundView->setHint(tr("No clip meets all these words"));
    }
    updateButtons();
}

void MainWindow::enterCatalogue()
{
    if (mFound->rowCount() > 0) {
        mFoundView->selectOnly(0, 1);
        mFoundView->setFocus();
    }
}

void MainWindow::showFocus(QWidget*, QWidget* now)
{
    mFocusFrame->setWidget(isAncestorOf(now) ? now : nullptr);
}

void MainWindow::addSelection()
{
    QList<Clip> clips;
    for (const QModelIndex& index : mFoundView->sortedSelection()) {
        clips.append(mFound->clips().at(index.row()));
    }
    mPlaylist->insertClips(mPlaylist->rowCount(), clips);
}

void MainWindow::removeSelection()
{
    const qsizetype count = mPlaylistView->sortedSelection().size();
    if (count > 0) {
        mPlaylistView->removeSelection();
        logInfo(QStringLiteral("Removed %1 from the playlist").arg(clipCount(count)));
    }
}

void MainWindow::updateButtons()
{
    mPlaylistTitle->setText(tr("&Playlist: %1").arg(clipCount(mPlaylist->rowCount())));
    mAdd->setEnabled(mFoundView->selectionModel()->hasSelection());
    mRemove->setEnabled(mPlaylistView->selectionModel()->hasSelection());
}

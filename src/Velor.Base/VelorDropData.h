#pragma once

#include "VelorBaseExport.h"

#include <QtCore/QByteArray>
#include <QtCore/QList>
#include <QtCore/QString>

#include <cstdint>

class QDataStream;
class QMimeData;
class QPixmap;

/// What travels with a drag inside the application, and between two running copies of it: a list of named
/// items, each with bytes of its own, and a number for the kind of thing that is dragged. A second service
/// makes the image that the cursor carries meanwhile.
///
/// A plain value: copies share the items until one side changes, and one object belongs to one thread at a
/// time. A moved-from object has no items and keeps its type.
///
/// In a `QMimeData` and in a `QDataStream` the payload has one form, which carries no version:
///
/// | Field | Form |
/// |---|---|
/// | number of items | `qint32` |
/// | type | `qint32` |
/// | then for each item: name | `QVariant` of a `QString` |
/// | and data | `QVariant` of a `QByteArray` |
///
/// Writer and reader must use the same byte order and version of `QDataStream`. `getMimeData` and the
/// constructor from mime data use those that a new stream has: big-endian, and the version of the Qt at hand.
class VELOR_BASE_EXPORT VelorDropData
{
public:
    /// The kind of a drag. Any other number is carried through unchanged and means nothing here.
    enum Type : std::int32_t
    {
        Nothing = 0,
        Clip = 2,
        Category = 3,
    };

    /// One thing that is dragged.
    struct Item
    {
        /// What the thing is called.
        QString name;
        /// What the thing carries; nothing here looks into it.
        QByteArray data;
    };

    /// The mime format of a payload, and the second name of the meta type.
    static constexpr char MetaTypeName[] = "application/x-velordropdata";

    /// How many images a drag of several things should show at most. Nothing here applies it: the caller
    /// chooses the images.
    static constexpr int DragMultipleDefaultLimit = 3;

    /// Side of the square slot of one image, in device-independent pixels.
    static constexpr int DragPixmapSize = 100;

    /// How much each further image adds to the width, in device-independent pixels.
    static constexpr int DragPixmapExtraWidth = 20;

    /// No items, and the type `Nothing`.
    VelorDropData() = default;

    /// Reads the payload of `mimeData`, which must not be null and stays the caller's. Mime data without the
    /// format yields no items and the type `Nothing`; broken bytes yield what is before the first error.
    explicit VelorDropData(const QMimeData* mimeData);

    /// A payload of these items, in their order.
    VelorDropData(const QList<Item>& items, Type type);

    /// The items in list order, valid until this payload changes.
    const QList<Item>& getItems() const { return mItems; }
    /// Appends `item`.
    void addItem(const Item& item);

    /// The names of all items in list order, one for each item.
    QList<QString> getItemNames() const;

    /// What is dragged.
    /// @{
    void setType(Type type) { mType = type; }
    Type getType() const { return mType; }
    /// @}

    /// Whether the type is `Clip` or `Category`.
    bool isClipOrCategory() { return mType == Clip || mType == Category; }

    /// A new object that holds the payload under `MetaTypeName` and no other format. The caller owns it.
    QMimeData* getMimeData() const;

    /// Lets `QMetaType` find the class by `MetaTypeName` as well as by its own name. Call it once, before the
    /// first look-up by either name; further calls do nothing.
    static void registerMetaTypes();

    /// The image for a drag of several things: `pixmaps` fanned out to the right like cards, the first on top
    /// at the left edge. With `addPlus` the image of the resource ":/Edit/Drag_Plus", which the application
    /// supplies, follows them as the last card.
    ///
    /// Each card is scaled to fit its slot, keeps its shape, and stands in the slot's top left corner. What
    /// no card covers is transparent. A single card is returned as it was scaled, without a slot around it. A
    /// null pixmap, or a plus image that cannot be loaded, takes its slot and draws nothing. Without any
    /// card the result is a null pixmap.
    ///
    /// `devicePixelRatio`, above 0, is that of the screen: it scales the slots, and the result carries it. A
    /// pixmap counts with its real pixels, whatever ratio it carries itself. Call it on the GUI thread, as
    /// everything that paints pixmaps.
    static QPixmap getDragMultiplePixmap(QList<QPixmap> pixmaps, bool addPlus, double devicePixelRatio);

private:
    friend VELOR_BASE_EXPORT QDataStream& operator>>(QDataStream& stream, VelorDropData& payload);

    QList<Item> mItems;
    Type mType = Nothing;
};

/// Writes the payload in the form that the class documents.
VELOR_BASE_EXPORT QDataStream& operator<<(QDataStream& stream, const VelorDropData& payload);

/// Reads a payload: its items are appended to those that are there, its type replaces the old one.
///
/// The bytes may be untrusted. A text is read where a name or data is expected, and so are bytes, a
/// number, a truth value and a variant without value, each converted by `QVariant`; containers, nested
/// variants and all other types are refused before they are read. Reading ends at the first error, which the
/// stream's status shows, and keeps the items that were whole. Memory and time follow the bytes that are
/// there, never the counts that they announce; a sequential device takes about twice its bytes. From a stream
/// of a version before `QDataStream::Qt_4_2` the type is read and no item, and the status is
/// `ReadCorruptData`.
///
/// A stream with an error from before is read all the same and keeps that error as its status, as with Qt's
/// own operators. Only inside a transaction Qt suspends reading after an error: then no items are added, and
/// the type is `Nothing`.
VELOR_BASE_EXPORT QDataStream& operator>>(QDataStream& stream, VelorDropData& payload);

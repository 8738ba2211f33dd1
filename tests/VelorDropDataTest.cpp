#include <Velor.Base/VelorDropData.h>

#include <QtCore/QBuffer>
#include <QtCore/QDataStream>
#include <QtCore/QMimeData>
#include <QtCore/QVariant>
#include <QtGui/QGuiApplication>
#include <QtGui/QImage>
#include <QtGui/QPixmap>

#include <gtest/gtest.h>

#include <algorithm>
#include <memory>
#include <utility>

// Both macros must stand outside of any namespace.
static void addPlusResource() { Q_INIT_RESOURCE(DragPlus); }
static void removePlusResource() { Q_CLEANUP_RESOURCE(DragPlus); }

namespace {

using Item = VelorDropData::Item;
using Items = QList<Item>;

const QString Walk = QStringLiteral("walk \u00e4");
const QString Empty = QStringLiteral("");

// Packed by Python's struct module from the table in the header.
const char FrozenHex[] = "00000003 00000003"
                         "0000000a 00 0000000c 00770061006c006b002000e4 0000000c 00 00000003 00ff10"
                         "0000000a 00 00000000                          0000000c 00 00000000"
                         "0000000a 00 0000000c 00770061006c006b002000e4 0000000c 00 00000001 78";

VelorDropData frozenPayload()
{
    return {{{Walk, QByteArray("\0\xff\x10", 3)}, {Empty, QByteArray("")}, {Walk, "x"}},
            VelorDropData::Category};
}

QByteArray written(const VelorDropData& payload)
{
    QByteArray bytes;
    QDataStream stream(&bytes, QIODevice::WriteOnly);
    stream << payload;
    return bytes;
}

QString told(const VelorDropData& payload)
{
    QString text = QString::number(payload.getType());
    for (const Item& item : payload.getItems()) {
        text += QStringLiteral("|%1=%2").arg(item.name, QString::fromLatin1(item.data));
    }
    return text;
}

TEST(VelorDropData, BytesAreThoseOfTheFormat)
{
    EXPECT_EQ(written(frozenPayload()), QByteArray::fromHex(FrozenHex));
    EXPECT_EQ(written({}), QByteArray(8, '\0'));
}

TEST(VelorDropData, ReadsItsFormatAndLeavesWhatFollows)
{
    QDataStream stream(QByteArray::fromHex(FrozenHex) + "rest");
    VelorDropData payload;
    stream >> payload;
    EXPECT_EQ(told(payload), told(frozenPayload()));
    EXPECT_EQ(payload.getItemNames(), (QList<QString>{Walk, Empty, Walk}));
    EXPECT_EQ(stream.device()->readAll(), "rest");
}

TEST(VelorDropData, ReadingAddsItemsAndReplacesTheType)
{
    VelorDropData payload({{QStringLiteral("old"), "1"}}, VelorDropData::Clip);
    QDataStream stream(QByteArray::fromHex("00000001 fffffff9 0000000a00000000020061 0000000c00ffffffff"));
    stream >> payload;
    EXPECT_EQ(told(payload), QStringLiteral("-7|old=1|a="));
}

TEST(VelorDropData, FollowsTheByteOrderOfTheStream)
{
    QByteArray bytes;
    QDataStream out(&bytes, QIODevice::WriteOnly);
    out.setByteOrder(QDataStream::LittleEndian);
    out << frozenPayload();
    QDataStream in(bytes);
    in.setByteOrder(QDataStream::LittleEndian);
    VelorDropData payload;
    in >> payload;
    EXPECT_EQ(told(payload), told(frozenPayload()));
}

TEST(VelorDropData, ALargePayloadReadsWhole)
{
    VelorDropData payload;
    for (int i = 0; i < 100'000; ++i) {
        payload.addItem({QString::number(i), QByteArray::number(i)});
    }
    QDataStream stream(written(payload));
    VelorDropData read;
    stream >> read;
    EXPECT_EQ(stream.status(), QDataStream::Ok);
    EXPECT_EQ(told(read), told(payload));
}

struct ForeignRow
{
    const char* fault;
    const char* hex;
    const char* payload;
    QDataStream::Status status;
};

const ForeignRow ForeignRows[] = {
    {"nothing", "", "0", QDataStream::ReadPastEnd},
    {"type cut off", "00000001 0000", "0", QDataStream::ReadPastEnd},
    {"negative count", "ffffffff 00000002 0000000a", "2", QDataStream::Ok},
    {"numbers not converted", "00000001 00000002 00000002 00 0000002a 00000001 00 01", "2|42=true",
     QDataStream::Ok},
    {"texts not converted", "00000001 00000002 0000000c 00 00000001 61 0000000a 00 00000002 0062", "2|a=b",
     QDataStream::Ok},
    {"variants without value", "00000001 00000002 00000000 01 00000000 01", "2|=", QDataStream::Ok},
    {"count beyond the bytes", "7fffffff 00000003 0000000a 00 00000002 0061 0000000c 00 00000001 78", "3|a=x",
     QDataStream::ReadPastEnd},
    {"half an item kept", "00000002 00000003 0000000a 00 00000002 0061 0000000c 00 00000001", "3",
     QDataStream::ReadPastEnd},
    {"length beyond the bytes", "00000001 00000002 0000000a 00 7ffffffe 0061", "2", QDataStream::ReadPastEnd},
    {"list that announces gigabytes", "00000001 00000002 0000000b 00 7fffffff", "2",
     QDataStream::ReadCorruptData},
    {"map", "00000001 00000002 00000008 00 00000000", "2", QDataStream::ReadCorruptData},
    {"user type", "00000001 00000002 00010000 00 00000004 466f6f00", "2", QDataStream::ReadCorruptData},
    {"unknown type", "00000001 00000002 deadbeef 00", "2", QDataStream::ReadCorruptData},
    {"foreign data behind a name", "00000001 00000002 0000000a 00 00000002 0061 00000009 00 00000000", "2",
     QDataStream::ReadCorruptData},
};

/// Tells the largest read that was asked of it, which a stream makes after it has reserved as much.
class WatchedBuffer : public QBuffer
{
public:
    using QBuffer::QBuffer;
    qint64 largestRead = 0;

protected:
    qint64 readData(char* data, qint64 size) override
    {
        largestRead = std::max(largestRead, size);
        return QBuffer::readData(data, size);
    }
};

TEST(VelorDropData, ForeignBytesEndAtTheFirstErrorAndTakeNoMemory)
{
    for (const ForeignRow& row : ForeignRows) {
        SCOPED_TRACE(row.fault);
        QByteArray bytes = QByteArray::fromHex(row.hex);
        WatchedBuffer device(&bytes);
        device.open(QIODevice::ReadOnly | QIODevice::Unbuffered);
        QDataStream stream(&device);
        VelorDropData payload;
        stream >> payload;
        EXPECT_EQ(told(payload), QString::fromLatin1(row.payload));
        EXPECT_EQ(stream.status(), row.status);
        EXPECT_LE(device.largestRead, 32);
    }
}

TEST(VelorDropData, DeepNestingDoesNotTakeTheStack)
{
    const QByteArray level = QByteArray::fromHex("00000009 00 00000001");
    QDataStream stream(QByteArray::fromHex("00000001 00000002") + level.repeated(1'000'000));
    VelorDropData payload;
    stream >> payload;
    EXPECT_EQ(stream.status(), QDataStream::ReadCorruptData);
}

TEST(VelorDropData, MimeDataHoldsThePayloadAndNothingElse)
{
    const std::unique_ptr<QMimeData> mimeData(frozenPayload().getMimeData());
    EXPECT_EQ(mimeData->formats(), QStringList{QStringLiteral("application/x-velordropdata")});
    EXPECT_EQ(mimeData->data(QStringLiteral("application/x-velordropdata")), QByteArray::fromHex(FrozenHex));
    EXPECT_EQ(told(VelorDropData(mimeData.get())), told(frozenPayload()));

    QMimeData foreign;
    foreign.setText(QStringLiteral("text"));
    EXPECT_EQ(told(VelorDropData(&foreign)), QStringLiteral("0"));
}

TEST(VelorDropData, OnlyTwoTypesAreClipsOrCategories)
{
    for (const int type : {-1, 0, 1, 2, 3, 4}) {
        VelorDropData payload({}, static_cast<VelorDropData::Type>(type));
        EXPECT_EQ(payload.isClipOrCategory(), type == 2 || type == 3) << type;
    }
}

TEST(VelorDropData, MovedFromHasNoItemsAndKeepsItsType)
{
    VelorDropData source = frozenPayload();
    VelorDropData target = std::move(source);
    EXPECT_EQ(told(source), QStringLiteral("3")); // NOLINT(bugprone-use-after-move)
    source.addItem({QStringLiteral("new"), "1"});
    source = std::move(target);
    EXPECT_EQ(told(target), QStringLiteral("3")); // NOLINT(bugprone-use-after-move)
    EXPECT_EQ(told(source), told(frozenPayload()));
}

TEST(VelorDropData, MetaTypeHasTwoNamesAndStreamsButDoesNotCompare)
{
    VelorDropData::registerMetaTypes();
    const QMetaType type = QMetaType::fromType<VelorDropData>();
    EXPECT_STREQ(type.name(), "VelorDropData");
    EXPECT_EQ(QMetaType::fromName("VelorDropData"), type);
    EXPECT_EQ(QMetaType::fromName("application/x-velordropdata"), type);
    EXPECT_FALSE(type.isEqualityComparable() || type.isOrdered() || type.hasRegisteredDebugStreamOperator());

    QByteArray bytes;
    QDataStream out(&bytes, QIODevice::WriteOnly);
    ASSERT_TRUE(type.save(out, QVariant::fromValue(frozenPayload()).constData()));
    EXPECT_EQ(bytes, QByteArray::fromHex(FrozenHex));
    VelorDropData read;
    QDataStream in(bytes);
    ASSERT_TRUE(type.load(in, &read));
    EXPECT_EQ(told(read), told(frozenPayload()));
}

/// Pixmaps need the application object, and every test of them starts with the plus image at hand.
class VelorDropDataPixmap : public testing::Test
{
protected:
    VelorDropDataPixmap() { addPlusResource(); }

private:
    int mArgumentCount = 1;
    char mName[5] = "test";
    char* mArguments[2] = {mName, nullptr};
    QGuiApplication mApplication{mArgumentCount, mArguments};
};

QPixmap card(int width, int height, Qt::GlobalColor color, double ownRatio = 1.0)
{
    QPixmap pixmap(width, height);
    pixmap.fill(color);
    pixmap.setDevicePixelRatio(ownRatio);
    return pixmap;
}

QRgb pixel(const QPixmap& pixmap, int x, int y) { return pixmap.toImage().pixel(x, y); }

constexpr QRgb Transparent = 0x00000000;
constexpr QRgb Red = 0xFFFF0000;
constexpr QRgb Green = 0xFF00FF00;
constexpr QRgb Blue = 0xFF0000FF;

struct SizeRow
{
    int images;
    double ratio;
    QSize size;
};

const SizeRow SizeRows[] = {
    {1, 1.33, {133, 133}}, {2, 1.0, {120, 100}}, {3, 1.0, {140, 100}}, {2, 1.25, {150, 125}},
    {2, 1.33, {160, 133}}, {4, 1.5, {240, 150}}, {3, 2.0, {280, 200}}, {30, 3.0, {2040, 300}},
};

TEST_F(VelorDropDataPixmap, SizeIsExactAtEveryRatio)
{
    for (const SizeRow& row : SizeRows) {
        for (const double ownRatio : {1.0, 2.0}) {
            SCOPED_TRACE(testing::Message()
                         << row.images << " images, " << row.ratio << ", own " << ownRatio);
            const QList<QPixmap> cards(row.images, card(300, 300, Qt::blue, ownRatio));
            const QPixmap image = VelorDropData::getDragMultiplePixmap(cards, false, row.ratio);
            EXPECT_EQ(image.size(), row.size);
            EXPECT_EQ(image.devicePixelRatio(), row.ratio);
            EXPECT_EQ(pixel(image, row.size.width() - 1, row.size.height() - 1), Blue);
        }
    }
}

TEST_F(VelorDropDataPixmap, FirstCardLiesOnTopAndThePlusLast)
{
    const QList<QPixmap> cards{card(200, 100, Qt::green), card(50, 100, Qt::blue)};
    const QPixmap image = VelorDropData::getDragMultiplePixmap(cards, true, 1.0);
    ASSERT_EQ(image.size(), QSize(140, 100));
    EXPECT_EQ(cards.size(), 2);
    EXPECT_EQ(pixel(image, 0, 0), Green);
    EXPECT_EQ(pixel(image, 30, 49), Green) << "a wide card keeps its shape, above the later ones";
    EXPECT_EQ(pixel(image, 69, 50), Blue) << "a tall card stands at the left of its slot";
    EXPECT_EQ(pixel(image, 70, 50), Red) << "the plus card is not stretched over";
    EXPECT_EQ(pixel(image, 139, 99), Red);
    EXPECT_EQ(pixel(image, 0, 50), Transparent);
}

TEST_F(VelorDropDataPixmap, ASingleCardHasNoSlotAroundIt)
{
    const QPixmap image = VelorDropData::getDragMultiplePixmap({card(200, 100, Qt::green, 3.0)}, false, 1.0);
    EXPECT_EQ(image.size(), QSize(100, 50));
    EXPECT_EQ(image.devicePixelRatio(), 1.0);
    const QPixmap plus = VelorDropData::getDragMultiplePixmap({}, true, 1.5);
    EXPECT_EQ(plus.size(), QSize(150, 150));
    EXPECT_EQ(pixel(plus, 75, 75), Red);
    EXPECT_TRUE(VelorDropData::getDragMultiplePixmap({}, false, 1.0).isNull());
}

TEST_F(VelorDropDataPixmap, NullCardsWidenAndDrawNothing)
{
    const QPixmap image =
        VelorDropData::getDragMultiplePixmap({QPixmap(), card(10, 10, Qt::blue)}, false, 2.0);
    EXPECT_EQ(image.size(), QSize(240, 200));
    EXPECT_EQ(pixel(image, 39, 0), Transparent);
    EXPECT_EQ(pixel(image, 40, 0), Blue);
    EXPECT_TRUE(VelorDropData::getDragMultiplePixmap({QPixmap()}, false, 1.0).isNull());
}

TEST_F(VelorDropDataPixmap, AMissingPlusImageWidensOnly)
{
    removePlusResource();
    const QPixmap image = VelorDropData::getDragMultiplePixmap({card(10, 10, Qt::blue)}, true, 1.0);
    EXPECT_EQ(image.size(), QSize(120, 100));
    EXPECT_EQ(pixel(image, 99, 99), Blue);
    EXPECT_EQ(pixel(image, 100, 0), Transparent);
    EXPECT_TRUE(VelorDropData::getDragMultiplePixmap({}, true, 1.0).isNull());
}

} // namespace

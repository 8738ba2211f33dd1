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
#include <tuple>
#include <utility>

// Both macros must stand outside of any namespace.
static void addPlusResource() { Q_INIT_RESOURCE(DragPlus); }
static void removePlusResource() { Q_CLEANUP_RESOURCE(DragPlus); }

namespace {

const QString Walk = QStringLiteral("walk \u00e4");
const QString Empty = QStringLiteral("");
const QString Format = QStringLiteral("application/x-velordropdata");

// Packed by Python's struct module from the table in the header.
const QByteArray Frozen =
    QByteArray::fromHex("00000003 00000003"
                        "0000000a 00 0000000c 00770061006c006b002000e4 0000000c 00 00000003 00ff10"
                        "0000000a 00 00000000                          0000000c 00 00000000"
                        "0000000a 00 0000000c 00770061006c006b002000e4 0000000c 00 00000001 78");
const VelorDropData FrozenPayload({{Walk, QByteArray("\0\xff\x10", 3)}, {Empty, QByteArray("")}, {Walk, "x"}},
                                  VelorDropData::Category);

QByteArray written(const VelorDropData& payload, QDataStream::ByteOrder order = QDataStream::BigEndian)
{
    QByteArray bytes;
    QDataStream stream(&bytes, QIODevice::WriteOnly);
    stream.setByteOrder(order);
    stream << payload;
    return bytes;
}

VelorDropData readFrom(QDataStream& stream, VelorDropData payload = {})
{
    stream >> payload;
    return payload;
}

QString told(const VelorDropData& payload)
{
    QString text = QString::number(payload.getType());
    for (const VelorDropData::Item& item : payload.getItems()) {
        text += QStringLiteral("|%1=%2").arg(item.name, QString::fromLatin1(item.data));
    }
    return text;
}

TEST(VelorDropData, BytesAreThoseOfTheFormatInTheStreamsOrder)
{
    EXPECT_EQ(written({}), QByteArray(8, '\0'));
    EXPECT_EQ(written(FrozenPayload), Frozen);
    const QByteArray little = written(FrozenPayload, QDataStream::LittleEndian);
    EXPECT_EQ(little.first(17).toHex(), "03000000030000000a000000000c000000");
    for (const auto order : {QDataStream::BigEndian, QDataStream::LittleEndian}) {
        QDataStream stream((order == QDataStream::BigEndian ? Frozen : little) + "rest");
        stream.setByteOrder(order);
        EXPECT_EQ(told(readFrom(stream)), told(FrozenPayload));
        EXPECT_EQ(stream.device()->readAll(), "rest");
    }
    EXPECT_EQ(FrozenPayload.getItemNames(), (QList<QString>{Walk, Empty, Walk}));
}

/// Tells the largest read that was asked of it, which a stream makes after it has reserved as much.
struct WatchedBuffer : QBuffer
{
    using QBuffer::QBuffer;
    qint64 largestRead = 0;
    qint64 readData(char* data, qint64 size) override
    {
        largestRead = std::max(largestRead, size);
        return QBuffer::readData(data, size);
    }
};

TEST(VelorDropData, ForeignBytesAddItemsUntilTheFirstErrorAndTakeNeitherMemoryNorStack)
{
    constexpr auto Ok = QDataStream::Ok, Short = QDataStream::ReadPastEnd, Bad = QDataStream::ReadCorruptData;
    const QByteArray one = "00000001 00000002", name = "0000000a 00 00000002 0061";
    const QByteArray data = "0000000c 00 00000001 78";
    using Row = std::tuple<const char*, QByteArray, const char*, QDataStream::Status>;
    const VelorDropData old({{QStringLiteral("o"), "1"}}, VelorDropData::Clip);
    const Row rows[] = {
        {"nothing", "", "0|o=1", Short},
        {"type cut off", "00000001 0000", "0|o=1", Short},
        {"negative count", "ffffffff 00000002 0000000a", "2|o=1", Ok},
        {"null data", "00000001 fffffff9" + name + "0000000c 00 ffffffff", "-7|o=1|a=", Ok},
        {"numbers not converted", one + "00000002 00 0000002a 00000001 00 01", "2|o=1|42=true", Ok},
        {"texts not converted", one + data + name, "2|o=1|x=a", Ok},
        {"variants without value", one + "00000000 01 00000000 01", "2|o=1|=", Ok},
        {"count beyond the bytes", "7fffffff 00000003" + name + data, "3|o=1|a=x", Short},
        {"half an item kept", "00000002 00000003" + name + data.chopped(2), "3|o=1", Short},
        {"length beyond the bytes", one + "0000000a 00 7ffffffe 0061", "2|o=1", Short},
        {"list that announces gigabytes", one + "0000000b 00 7fffffff", "2|o=1", Bad},
        {"user type", one + "00010000 00 00000004 466f6f00", "2|o=1", Bad},
        {"foreign data behind a name", one + name + "00000009 00 00000000", "2|o=1", Bad},
        {"two whole items", "00000002 00000003" + name + data + name + data, "3|o=1|a=x|a=x", Ok},
        {"lists as deep as the stack", one + QByteArray("00000009 00 00000001").repeated(100'000), "2|o=1",
         Bad},
    };
    for (const auto& [fault, hex, payload, status] : rows) {
        for (const QDataStream::Status earlier : {Ok, Short, Bad, QDataStream::WriteFailed}) {
            SCOPED_TRACE(testing::Message() << fault << ", status before " << earlier);
            QByteArray bytes = QByteArray::fromHex(hex);
            WatchedBuffer device(&bytes);
            device.open(QIODevice::ReadOnly | QIODevice::Unbuffered);
            QDataStream stream(&device);
            stream.setStatus(earlier);
            EXPECT_EQ(told(readFrom(stream, old)), QString::fromLatin1(payload));
            EXPECT_EQ(stream.status(), earlier == Ok ? status : earlier);
            EXPECT_LE(device.largestRead, 32);
        }
    }
}

TEST(VelorDropData, NothingIsReadAfterAnErrorInATransaction)
{
    QDataStream stream(Frozen);
    stream.startTransaction();
    stream.setStatus(QDataStream::ReadPastEnd);
    EXPECT_EQ(told(readFrom(stream, {{}, VelorDropData::Clip})), QStringLiteral("0"));
    EXPECT_FALSE(stream.commitTransaction());
    stream.startTransaction();
    EXPECT_EQ(told(readFrom(stream)), told(FrozenPayload))
        << "a new transaction starts where the old one did";
    EXPECT_TRUE(stream.commitTransaction());
}

TEST(VelorDropData, StreamsOfFormsBeforeQt42AreCorrupt)
{
    for (const auto version : {QDataStream::Qt_4_1, QDataStream::Qt_4_2}) {
        QByteArray bytes;
        QDataStream out(&bytes, QIODevice::WriteOnly);
        out.setVersion(version);
        out << FrozenPayload;
        QDataStream in(bytes);
        in.setVersion(version);
        const bool isOld = version == QDataStream::Qt_4_1;
        EXPECT_EQ(told(readFrom(in)), isOld ? QStringLiteral("3") : told(FrozenPayload));
        EXPECT_EQ(in.status(), isOld ? QDataStream::ReadCorruptData : QDataStream::Ok);
    }
}

TEST(VelorDropData, MimeDataHoldsThePayloadAndNothingElse)
{
    const std::unique_ptr<QMimeData> mimeData(FrozenPayload.getMimeData());
    EXPECT_EQ(mimeData->formats(), QStringList{Format});
    EXPECT_EQ(mimeData->data(Format), Frozen);
    EXPECT_EQ(told(VelorDropData(mimeData.get())), told(FrozenPayload));

    QMimeData foreign;
    foreign.setText(QStringLiteral("text"));
    EXPECT_EQ(told(VelorDropData(&foreign)), QStringLiteral("0"));
}

TEST(VelorDropData, MetaTypeHasTwoNamesAndStreamsButDoesNotCompare)
{
    VelorDropData::registerMetaTypes();
    const QMetaType type = QMetaType::fromType<VelorDropData>();
    EXPECT_STREQ(type.name(), "VelorDropData");
    EXPECT_EQ(QMetaType::fromName("VelorDropData"), type);
    EXPECT_EQ(QMetaType::fromName(Format.toLatin1()), type);
    EXPECT_FALSE(type.isEqualityComparable() || type.isOrdered() || type.hasRegisteredDebugStreamOperator());

    QByteArray bytes;
    QDataStream out(&bytes, QIODevice::WriteOnly);
    ASSERT_TRUE(type.save(out, &FrozenPayload));
    EXPECT_EQ(bytes, Frozen);
}

/// Pixmaps need the application object, and every test of them starts with the plus image at hand.
class VelorDropDataPixmap : public testing::Test
{
protected:
    VelorDropDataPixmap() { addPlusResource(); }

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

constexpr auto imageOf = VelorDropData::getDragMultiplePixmap;
constexpr QRgb Transparent = 0x00000000, Red = 0xFFFF0000, Green = 0xFF00FF00, Blue = 0xFF0000FF;

void expectImage(const QPixmap& image, QSize size, double ratio, const QList<std::pair<QPoint, QRgb>>& pixels)
{
    EXPECT_EQ(image.size(), size);
    EXPECT_EQ(image.devicePixelRatio(), ratio);
    for (const auto& [place, color] : pixels) {
        EXPECT_EQ(image.toImage().pixel(place), color) << "at " << place.x() << ", " << place.y();
    }
}

TEST_F(VelorDropDataPixmap, SizeIsExactAtEveryRatio)
{
    const std::tuple<int, double, QSize> rows[] = {
        {1, 1.33, {133, 133}}, {2, 1.0, {120, 100}}, {3, 1.0, {140, 100}}, {2, 1.25, {150, 125}},
        {2, 1.33, {160, 133}}, {4, 1.5, {240, 150}}, {3, 2.0, {280, 200}}, {30, 3.0, {2040, 300}},
    };
    for (const auto& [images, ratio, size] : rows) {
        for (const double ownRatio : {1.0, 2.0}) {
            SCOPED_TRACE(testing::Message() << images << " images, " << ratio << ", own " << ownRatio);
            const QList<QPixmap> cards(images, card(300, 300, Qt::blue, ownRatio));
            expectImage(imageOf(cards, false, ratio), size, ratio,
                        {{{size.width() - 1, size.height() - 1}, Blue}});
        }
    }
}

TEST_F(VelorDropDataPixmap, FirstCardLiesOnTopAndThePlusLast)
{
    const QList<QPixmap> cards{card(200, 100, Qt::green), card(50, 100, Qt::blue)};
    expectImage(imageOf(cards, true, 1.0), {140, 100}, 1.0,
                {{{0, 0}, Green},
                 {{30, 49}, Green}, // a wide card keeps its shape, above the later ones
                 {{69, 50}, Blue},  // a tall card stands at the left of its slot
                 {{70, 50}, Red},   // and is not stretched over the plus card
                 {{139, 99}, Red},
                 {{0, 50}, Transparent}});
}

TEST_F(VelorDropDataPixmap, ASingleCardHasNoSlotAroundIt)
{
    expectImage(imageOf({card(200, 100, Qt::green, 3.0)}, false, 1.0), {100, 50}, 1.0, {{{99, 49}, Green}});
    expectImage(imageOf({}, true, 1.5), {150, 150}, 1.5, {{{75, 75}, Red}});
    EXPECT_TRUE(imageOf({}, false, 1.0).isNull());
}

TEST_F(VelorDropDataPixmap, NullCardsAndAMissingPlusWidenAndDrawNothing)
{
    removePlusResource();
    const QPixmap blue = card(10, 10, Qt::blue);
    expectImage(imageOf({{}, blue}, false, 2.0), {240, 200}, 2.0, {{{39, 0}, Transparent}, {{40, 0}, Blue}});
    expectImage(imageOf({blue}, true, 1.0), {120, 100}, 1.0, {{{99, 99}, Blue}, {{100, 0}, Transparent}});
    EXPECT_TRUE(imageOf({QPixmap()}, false, 1.0).isNull());
    EXPECT_TRUE(imageOf({}, true, 1.0).isNull());
}

} // namespace

#include <Velor.Base/VelorDropData.h>

#include <QtCore/QDataStream>
#include <QtCore/QIODevice>
#include <QtCore/QMimeData>
#include <QtCore/QVariant>
#include <QtGui/QGuiApplication>
#include <QtGui/QImage>
#include <QtGui/QPixmap>

#include <gtest/gtest.h>

#include <memory>
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

VelorDropData readFrom(QDataStream& stream, VelorDropData payload = {})
{
    stream >> payload;
    return payload;
}

QString textOf(const VelorDropData& payload)
{
    QString text = QString::number(payload.getType());
    for (const VelorDropData::Item& item : payload.getItems()) {
        text += QStringLiteral("|%1=%2").arg(item.name, QString::fromLatin1(item.data));
    }
    return text;
}

TEST(VelorDropData, MimeDataHoldsTheBytesOfTheFormatAndNothingElse)
{
    const std::unique_ptr<QMimeData> mimeData(FrozenPayload.getMimeData());
    EXPECT_EQ(mimeData->formats(), QStringList{Format});
    EXPECT_EQ(mimeData->data(Format), Frozen);
    const VelorDropData readBack(mimeData.get());
    EXPECT_EQ(textOf(readBack), textOf(FrozenPayload));
    EXPECT_EQ(readBack.getItemNames(), (QList<QString>{Walk, Empty, Walk}));

    QMimeData foreign;
    foreign.setText(QStringLiteral("text"));
    EXPECT_EQ(textOf(VelorDropData(&foreign)), QStringLiteral("0"));
}

TEST(VelorDropData, BytesFollowTheOrderOfTheStreamAndEndWithThePayload)
{
    QByteArray bytes;
    QDataStream stream(&bytes, QIODevice::ReadWrite);
    stream.setByteOrder(QDataStream::LittleEndian);
    stream << FrozenPayload << quint8('x');
    EXPECT_EQ(bytes.first(17).toHex(), "03000000030000000a000000000c000000");
    stream.device()->reset();
    EXPECT_EQ(textOf(readFrom(stream)), textOf(FrozenPayload));
    EXPECT_EQ(stream.device()->readAll(), "x");
}

struct ForeignRow
{
    const char* rule;
    QByteArray hex;
    const char* after; ///< the stream's status, and what is then in a payload that had the item o=1
};

TEST(VelorDropData, ForeignBytesAddWholeItemsUntilTheFirstError)
{
    const QByteArray one = "00000001 00000002", name = "0000000a 00 00000002 0061";
    const QByteArray data = "0000000c 00 00000001 78";
    const ForeignRow rows[] = {
        {"items keep their order", "00000002 00000003" + name + data + data + name, "ok 3|o=1|a=x|x=a"},
        {"a negative count adds none", "ffffffff 00000002 0000000a", "ok 2|o=1"},
        {"null data is empty", "00000001 fffffff9" + name + "0000000c 00 ffffffff", "ok -7|o=1|a="},
        {"a number becomes a text", one + "00000002 00 0000002a 00000000 01", "ok 2|o=1|42="},
        {"half a type is 0", "00000001 0000", "past end 0|o=1"},
        {"a count may be too large", "7fffffff 00000003" + name + data, "past end 3|o=1|a=x"},
        {"half an item is left out", "00000002 00000003" + name + data.chopped(2), "past end 3|o=1"},
        {"data is looked at as well", one + name + "00000009 00 00000000", "corrupt 2|o=1"},
        {"lists may be nested deep", one + QByteArray("00000009 00 00000001").repeated(100'000),
         "corrupt 2|o=1"},
    };
    constexpr const char* Statuses[] = {"ok", "past end", "corrupt"};
    const VelorDropData old({{QStringLiteral("o"), "1"}}, VelorDropData::Clip);
    for (const auto& [rule, hex, after] : rows) {
        QDataStream stream(QByteArray::fromHex(hex));
        const QString payload = textOf(readFrom(stream, old));
        EXPECT_EQ(QLatin1String(Statuses[stream.status()]) + u' ' + payload, QLatin1String(after)) << rule;
    }
}

TEST(VelorDropData, AnEarlierErrorOfTheStreamStaysAndStopsNothing)
{
    QDataStream stream(Frozen.chopped(1));
    stream.setStatus(QDataStream::ReadCorruptData);
    EXPECT_EQ(readFrom(stream).getItems().size(), 2);
    EXPECT_EQ(stream.status(), QDataStream::ReadCorruptData);
}

TEST(VelorDropData, NothingIsReadAfterAnErrorInATransaction)
{
    QDataStream stream(Frozen);
    stream.startTransaction();
    stream.setStatus(QDataStream::ReadPastEnd);
    EXPECT_EQ(textOf(readFrom(stream, {{}, VelorDropData::Clip})), QStringLiteral("0"));
    EXPECT_FALSE(stream.commitTransaction());
}

TEST(VelorDropData, StreamsOfFormsBeforeQt42AreCorrupt)
{
    for (const auto version : {QDataStream::Qt_4_1, QDataStream::Qt_4_2}) {
        QDataStream stream(Frozen);
        stream.setVersion(version);
        const bool isOld = version == QDataStream::Qt_4_1;
        EXPECT_EQ(textOf(readFrom(stream)), isOld ? QStringLiteral("3") : textOf(FrozenPayload));
        EXPECT_EQ(stream.status(), isOld ? QDataStream::ReadCorruptData : QDataStream::Ok);
    }
}

TEST(VelorDropData, MetaTypeIsKnownByItsOwnNameAndTheMimeFormat)
{
    VelorDropData::registerMetaTypes();
    const QMetaType type = QMetaType::fromType<VelorDropData>();
    EXPECT_EQ(QMetaType::fromName("VelorDropData"), type);
    EXPECT_EQ(QMetaType::fromName(Format.toLatin1()), type);
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

TEST_F(VelorDropDataPixmap, SlotsAreRoundedToWholePixelsAndASingleCardHasNone)
{
    const QPixmap wide = card(200, 100, Qt::green, 3.0);
    expectImage(imageOf({wide, wide, wide}, false, 1.33), {187, 133}, 1.33, {{{186, 65}, Green}});
    expectImage(imageOf({wide}, false, 1.0), {100, 50}, 1.0, {{{99, 49}, Green}});
    expectImage(imageOf({}, true, 1.33), {133, 133}, 1.33, {{{132, 132}, Red}});
    EXPECT_TRUE(imageOf({}, false, 1.0).isNull());
}

TEST_F(VelorDropDataPixmap, NullCardsAndAMissingPlusWidenAndDrawNothing)
{
    removePlusResource();
    const QPixmap blue = card(10, 10, Qt::blue);
    expectImage(imageOf({{}, blue}, false, 2.0), {240, 200}, 2.0, {{{39, 0}, Transparent}, {{40, 0}, Blue}});
    EXPECT_EQ(imageOf({blue}, true, 1.0).width(), 120);
    EXPECT_TRUE(imageOf({QPixmap()}, false, 1.0).isNull());
    EXPECT_TRUE(imageOf({}, true, 1.0).isNull());
}

} // namespace

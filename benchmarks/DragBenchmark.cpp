#include <Velor.Base/VelorDropData.h>

#include <QtCore/QDataStream>
#include <QtCore/QIODevice>
#include <QtCore/QVariant>
#include <QtGui/QGuiApplication>
#include <QtGui/QPixmap>

#include <benchmark/benchmark.h>

namespace {

constexpr int Images = 30;
constexpr int ImageSide = 4000;
constexpr int Items = 100'000;

/// Pixmaps need an application object; no window is shown.
void startGui()
{
    static int argumentCount = 1;
    static char name[] = "DragBenchmark";
    static char* arguments[] = {name, nullptr};
    qputenv("QT_QPA_PLATFORM", "offscreen");
    static QGuiApplication application(argumentCount, arguments);
}

QList<QPixmap> bigImages()
{
    startGui();
    QPixmap image(ImageSide, ImageSide);
    image.fill(QColor(10, 20, 30, 200));
    return QList<QPixmap>(Images, image);
}

/// The peer: what the scaling of the cards costs, which no fan can do without.
void ScaleAlone(benchmark::State& state)
{
    const QList<QPixmap> images = bigImages();
    const int side = VelorDropData::DragPixmapSize;
    for (auto _ : state) {
        for (const QPixmap& image : images) {
            benchmark::DoNotOptimize(image.scaled(side, side, Qt::KeepAspectRatio, Qt::SmoothTransformation));
        }
    }
}
BENCHMARK(ScaleAlone)->Unit(benchmark::kMillisecond)->UseRealTime();

void ScaleAndFan(benchmark::State& state)
{
    const QList<QPixmap> images = bigImages();
    for (auto _ : state) {
        benchmark::DoNotOptimize(VelorDropData::getDragMultiplePixmap(images, false, 1.0));
    }
}
BENCHMARK(ScaleAndFan)->Unit(benchmark::kMillisecond)->UseRealTime();

QByteArray bigPayload()
{
    VelorDropData payload;
    for (int i = 0; i < Items; ++i) {
        payload.addItem({QStringLiteral("clip %1").arg(i), QByteArray(64, 'x')});
    }
    QByteArray bytes;
    QDataStream stream(&bytes, QIODevice::WriteOnly);
    stream << payload;
    return bytes;
}

/// The peer: the same bytes read by Qt's variants, which trust every type and length.
void ReadTrustingly(benchmark::State& state)
{
    const QByteArray bytes = bigPayload();
    for (auto _ : state) {
        QDataStream stream(bytes);
        qint32 count = 0;
        qint32 type = 0;
        stream >> count >> type;
        QList<VelorDropData::Item> items;
        for (qint32 i = 0; i < count; ++i) {
            QVariant name;
            QVariant data;
            stream >> name >> data;
            items.append({name.toString(), data.toByteArray()});
        }
        benchmark::DoNotOptimize(items.data());
    }
}
BENCHMARK(ReadTrustingly)->Unit(benchmark::kMillisecond);

void ReadPayload(benchmark::State& state)
{
    const QByteArray bytes = bigPayload();
    for (auto _ : state) {
        QDataStream stream(bytes);
        VelorDropData payload;
        stream >> payload;
        if (payload.getItems().size() != Items) {
            state.SkipWithError("the payload was not read whole");
        }
    }
}
BENCHMARK(ReadPayload)->Unit(benchmark::kMillisecond);

/// A few bytes that announce 2^31 - 1 items, and then a list of as many texts.
void RefuseHostileBytes(benchmark::State& state)
{
    const QByteArray bytes = QByteArray::fromHex("7fffffff 00000003 0000000b 00 7fffffff");
    for (auto _ : state) {
        QDataStream stream(bytes);
        VelorDropData payload;
        stream >> payload;
        benchmark::DoNotOptimize(payload.getItems().data());
    }
}
BENCHMARK(RefuseHostileBytes)->Unit(benchmark::kMicrosecond);

} // namespace

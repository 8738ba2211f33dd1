#include "support/VelorLogFixture.h"

#include <Velor.Base/VelorVectors.h>

#include <QtCore/QDebug>
#include <QtCore/QPoint>

#include <iomanip>

using namespace Qt::StringLiterals;
using testing::ElementsAre;

namespace {

using VelorLogStreamTest = VelorLogTest;

TEST_F(VelorLogStreamTest, AStreamDeliversOneMessageForEachFlush)
{
    const auto logStreams = [](VelorLog& log) {
        log.setDebugOutputEnabled(false);
        log.stream() << "read " << 3 << ' ' << std::hex << 255 << std::boolalpha << true << std::endl
                     << "all";
        log.stream(VelorLog::Error).flush();
        log.stream(VelorLog::Error);
        VelorLog::Stream stream = log.stream(VelorLog::Warning);
        stream << "a";
        stream.flush() << static_cast<std::streambuf*>(nullptr) << "lost with the error";
        stream.flush() << "b";
        VelorLog::Stream moved = std::move(stream);
        stream << "lost";
        stream.flush();
        moved << "c";
        VelorLog::Stream other = log.stream();
        other << "d";
        moved = std::move(other);
        other << "lost";
        other.flush();
        moved << "e";
        moved.flush();
    };
    EXPECT_THAT(
        outputsOf(logStreams),
        ElementsAre("", "",
                    "read 3 fftrue\nall\n[ERROR] - \n[WARNING] - a\n[WARNING] - \n[WARNING] - bc\nde\n"));
}

TEST_F(VelorLogStreamTest, AStreamWithoutALogWarnsUntilOneIsAssigned)
{
    const auto logLate = [](VelorLog& log) {
        VelorLog::Stream(nullptr, VelorLog::Info, false);
        VelorLog::Stream stream(nullptr, VelorLog::Info, false);
        stream << "lost";
        stream = log.stream(VelorLog::Error, true);
        stream << "text";
    };
    EXPECT_THAT(outputsOf(logLate), ElementsAre("", "Warning: Log is null!\n", "[ERROR] - text\n"));
}

TEST_F(VelorLogStreamTest, AStreamTakesTheTextsOfQtAsUtf8AndOtherValuesInTheirDebugForm)
{
    const auto logTexts = [](VelorLog& log) {
        log.setDebugOutputEnabled(false);
        log.stream() << u"\u0416\u00E9"_s << QStringView(u"\u0417") << QLatin1StringView("\xE9") << u"\u0418"
                     << std::u16string(u"\u0419") << u8"\u041A" << QChar(u'\u041B') << QString();
        log.stream() << std::setw(6) << u"right"_s << QByteArray("\xFFraw\0", 5) << "text"
                     << std::string("s");
        log.stream() << TVec2d<float>{1, 2} << QPoint(1, 2);
        log.stream() << VelorLog::Error << std::hex << 255 << QStringList{u"a b"_s, u"c"_s} << Qt::Horizontal;
    };
    EXPECT_EQ(outputsOf(logTexts)[2], "\u0416\u00E9\u0417\u00E9\u0418\u0419\u041A\u041B\n" +
                                          std::string(" right\xFFraw\0texts\n", 17) +
                                          "TVec2d(1, 2)QPoint(1,2)\n"
                                          "1ffQList(\"a b\", \"c\")1\n");
}

} // namespace

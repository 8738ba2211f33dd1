#include "PackProgress.h"

#include "Interruption.h"

#include <cstdio>
#include <string>
#include <unistd.h>

namespace {

constexpr int BarWidth = 50;
constexpr int LineStep = 10;

} // namespace

PackProgress::PackProgress(bool isQuiet)
    : mIsQuiet(isQuiet)
    , mIsTerminal(isatty(STDOUT_FILENO) != 0)
{}

PackProgress::~PackProgress()
{
    if (mIsTerminal && mShown > 0) {
        std::printf("\n");
        std::fflush(stdout);
    }
}

void PackProgress::onPercent(int percent)
{
    ++mFiles;
    endIfInterrupted();
    if (mIsQuiet || percent == mShown) {
        return;
    }
    if (mIsTerminal) {
        showBar(percent);
    } else {
        showLine(percent);
    }
}

void PackProgress::showBar(int percent)
{
    mShown = percent;
    std::string bar(BarWidth, '.');
    bar.replace(0, static_cast<std::size_t>(BarWidth * percent / 100),
                static_cast<std::size_t>(BarWidth * percent / 100), '#');
    std::printf("\rpacking [%s] %3d %%", bar.c_str(), percent);
    std::fflush(stdout);
}

void PackProgress::showLine(int percent)
{
    if (percent / LineStep > mShown / LineStep) {
        std::printf("packing: %d %%\n", percent);
        std::fflush(stdout);
    }
    mShown = percent;
}

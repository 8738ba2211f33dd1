#pragma once

#include <Velor.Base/VelorZipStream.h>

/// Shows how far the packing has come on standard output: a bar on a terminal, elsewhere a line for each
/// tenth. Ends the packing with a Failure if the user interrupts it.
class PackProgress : public VelorPercentListener
{
public:
    explicit PackProgress(bool isQuiet);
    /// Ends the line of the bar.
    ~PackProgress();
    PackProgress(const PackProgress&) = delete;
    PackProgress& operator=(const PackProgress&) = delete;

    void onPercent(int percent) override;

    /// How many files are packed.
    qsizetype files() const { return mFiles; }

private:
    void showBar(int percent);
    void showLine(int percent);

    bool mIsQuiet;
    bool mIsTerminal;
    int mShown = 0;
    qsizetype mFiles = 0;
};

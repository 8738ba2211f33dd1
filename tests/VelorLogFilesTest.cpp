#include "support/TestHelpers.h"

#include <Velor.Base/VelorLogFiles.h>

#include <gtest/gtest.h>

#include <tuple>

namespace {

TEST(VelorLogFiles, OnlyFilesOfTheStatedFormAreOldLogFilesAfterADay)
{
    const std::tuple<const char*, std::string, bool> rows[] = {
        {"exactly a day old", "A+b_2025-06-09_12-00-00.log", true},
        {"leap day", "A+b_2024-02-29_00-00-00.log", true},
        {"86399 seconds old", "A+b_2025-06-09_12-00-01.log", false},
        {"in the future", "A+b_2026-01-01_00-00-00.log", false},
        {"impossible month", "A+b_2025-13-01_00-00-00.log", false},
        {"another prefix that ends alike", "xA+b_2025-01-01_00-00-00.log", false},
        {"prefix is no expression", "AAb_2025-01-01_00-00-00.log", false},
        {"name of the form up to the first dot", "A+b_2025-01-01_00-00-00.backup.log", true},
        {"suffix in capitals", "A+b_2025-01-01_00-00-00.LOG", true},
        {"another suffix", "A+b_2025-01-01_00-00-00.txt", false},
        {"number behind the time", "A+b_2025-01-01_00-00-00_1.log", false},
    };
    const TestFolder folder;
    for (const auto& [rule, name, isOld] : rows) {
        writeFile(folder.narrowPath(name), "");
    }
    const QFileInfoList files =
        oldLogFiles("A+b", folder.narrowPath("."), QDateTime(QDate(2025, 6, 10), QTime(12, 0)));
    for (const auto& [rule, name, isOld] : rows) {
        EXPECT_EQ(files.contains(QFileInfo(folder.path(QString::fromStdString(name)))), isOld) << rule;
    }
}

} // namespace

// The report's export writes the local cube when the settings ask for one,
// and the statistics of that cube add up to the report's totals.
#include "reporting/Aggregation.h"
#include "reporting/ExportTestSupport.h"
#include "reporting/ReportJob.h"
#include "reporting/ReportTestSupport.h"
#include "reporting/SqliteStore.h"
#include "statistics/CubeFile.h"
#include "statistics/Pivot.h"

namespace hb::test {
namespace {

using reporting::test::scratchFolder;
namespace st = hb::statistics;

class Calendar : public CalendarSource {
  public:
    std::vector<CalendarEntry> entries;
    std::vector<CalendarEntry> read(const Period&) override { return entries; }
};

struct CubeEnv : ReportEnv {
    Calendar calendar;
    std::filesystem::path dir = scratchFolder();
    SqliteStore store{(dir / "Hourbook.sqlite").u16string()};
    std::vector<Str> folders;  // the cube folders the writer was given
    Str cubeFile = st::cubeFilePath(dir.u16string());

    CubeEnv() {
        s.oPersonalSettings->curPersonalRate = Currency::fromUnits(90);
        calendar.entries = {entry(u"a", at(24, 9), at(24, 12, 20), u"Acme, Smith"),
                            entry(u"b", at(24, 13), at(24, 14), u"Zenith"),
                            entry(u"c", at(25, 23), at(26, 1, 30), u"Acme"),
                            entry(u"d", at(27, 9), at(27, 11))};
    }
    reporting::Report run() {
        ReportOptions options;
        options.period = november();
        options.rounding = {15, RoundingDirection::Up};
        return runReport(s, calendar, store, options,
                         [this](const Str& folder, const Str& user, const Period& period,
                                const std::vector<TimeRecord>& records,
                                const std::array<Str, kReportLists>& captions) {
                             folders.push_back(folder);
                             st::writeCube(cubeFile, user, period, records, captions);
                         });
    }
};

TEST(LocalCube, WrittenByTheReportWhenTheSettingAsks) {
    CubeEnv e;
    e.s.oPersonalSettings->blnCreateLocalCube = false;
    e.run();
    EXPECT_TRUE(e.folders.empty());
    EXPECT_FALSE(std::filesystem::exists(std::filesystem::path(std::u16string(e.cubeFile))));

    e.s.oPersonalSettings->blnCreateLocalCube = true;
    e.run();
    const reporting::Report report = e.run();
    EXPECT_EQ(e.folders, (std::vector<Str>(2, u"C:\\Users\\John\\Documents\\OLAP Cubes")));
    const st::CubeContent cube = st::readCube(e.cubeFile, november());
    EXPECT_EQ(cube.captions[0], u"Company");
    // One row per record per day (the entry over midnight gives two), never doubled.
    EXPECT_EQ(cube.records.size(), report.records.size());
    EXPECT_EQ(cube.records.size(), 5U);

    // The pivot of the cube by company against the report's own totals.
    const st::PivotTable t = st::pivot(
        cube.records, {{Dimension::List1}, {Dimension::Day}, st::Measure::Amount, {}}, Locale());
    const reporting::SummaryNode total = aggregate(report.records, {Dimension::List1}, Locale());
    EXPECT_EQ(t.grandTotal().seconds, report.total.seconds);
    EXPECT_EQ(t.grandTotal().roundedSeconds, report.total.roundedSeconds);
    EXPECT_EQ(t.grandTotal().amount, report.total.amount);
    ASSERT_EQ(t.rows.size(), total.children.size() + 1);
    for (std::size_t r = 0; r < total.children.size(); ++r) {
        EXPECT_EQ(t.rows[r].labels[0], total.children[r].label);
        EXPECT_EQ(t.at(r, t.columns.size() - 1).amount, total.children[r].amount);
        EXPECT_EQ(t.at(r, t.columns.size() - 1).seconds, total.children[r].seconds);
    }
}

TEST(LocalCube, AFailingCubeFailsTheExportAsTheDatabaseWould) {
    CubeEnv e;
    e.s.oPersonalSettings->blnCreateLocalCube = true;
    e.cubeFile = (e.dir / "no such folder" / "cube.sqlite").u16string();
    EXPECT_THROW(e.run(), StoreError);
}

}  // namespace
}  // namespace hb::test

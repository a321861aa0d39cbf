// Window tracking after start-up: new explorers are wrapped and activated,
// closed ones dropped, and the calendar's watcher hears copies.
#include <gtest/gtest.h>

#include "addin/cCalendarReactions.h"
#include "explorer/cExplorerEvents.h"
#include "metadata/cAppointments.h"
#include "session/SessionHarness.h"

namespace hbtest {
namespace {

class Windows : public ::testing::Test {
  protected:
    void start() {
        h.setLists(workgroupLists());
        h.start();
        ASSERT_TRUE(h.loaded());
    }
    std::vector<std::shared_ptr<hb::cExplorerEvents>>& wrappers() {
        return h.session().oCalendarReactions->colExplorers;
    }
    SessionHarness h;
};

TEST_F(Windows, ASecondExplorerIsWrappedAndActivatedAtOnce) {
    start();
    const auto activationsBefore = h.instruments().count(u"Explorer", u"Activate");
    auto second = h.outlook().openExplorer(h.outlook().calendar());
    h.sc().pump();
    // The add-in activated the new window itself, which built its bar.
    ASSERT_EQ(wrappers().size(), 2u);
    EXPECT_EQ(sim::Instruments::simObject(wrappers()[1]->oueMyExplorer()), second);
    EXPECT_EQ(h.instruments().count(u"Explorer", u"Activate"), activationsBefore + 1);
    EXPECT_NE(SessionHarness::addinBar(*second), nullptr);

    // Closing it drops its wrapper only; the add-in stays.
    h.sc().close(second);
    ASSERT_EQ(wrappers().size(), 1u);
    EXPECT_EQ(sim::Instruments::simObject(wrappers()[0]->oueMyExplorer()), h.sc().explorer());
    EXPECT_TRUE(h.loaded());
    EXPECT_EQ(h.errorDialogs(), 0u) << h.messageBoxesText();
}

TEST_F(Windows, AnExplorerOnAnotherFolderIsWrappedWithoutABar) {
    start();
    auto second = h.sc().openExplorer(h.outlook().inbox());
    EXPECT_EQ(wrappers().size(), 2u);
    EXPECT_EQ(SessionHarness::addinBar(*second), nullptr);
}

TEST_F(Windows, ACopiedPostedAppointmentCountsAsNotPosted) {
    auto posted = h.addAppointment(u"Reported", u"Acme");
    posted->addUserProperty(u"strPosted", sim::ol::DateTime, Variant(sim::makeDate(2024, 5, 31)));
    start();
    auto copy = h.sc().copyItem(posted);
    auto property = copy->findUserProperty(u"strPosted");
    ASSERT_NE(property, nullptr);
    EXPECT_DOUBLE_EQ(property->value.toDate().days, hb::kNotPostedDay);
    EXPECT_GE(copy->saveCount, 1);
    // The original keeps its date.
    EXPECT_DOUBLE_EQ(posted->findUserProperty(u"strPosted")->value.toDate().days,
                     sim::makeDate(2024, 5, 31).days);
}

}  // namespace
}  // namespace hbtest

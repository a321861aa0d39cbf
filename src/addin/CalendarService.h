#pragma once
// What the add-in offers other programs on this computer through Office's
// list of COM add-ins (Application.COMAddIns("HBAddin.Connect").Object):
// the default calendar's entries of a period, read here, inside Outlook's
// process, and handed over as one text (reporting/CalendarTransfer.h).
// The report program asks for it first: from its own process each
// object-model call is a round trip through COM, and a month's report
// would take thousands of them.
//
//   ReadCalendar(firstDay, lastDay)  the entries of the local days from
//                                    firstDay to lastDay (serial day
//                                    numbers), as one text
//   Version                          1: the text's version
#include "common/DispatchObject.h"
#include "common/Session.h"

namespace hb {

class CalendarService : public DispatchObject {
  public:
    explicit CalendarService(Session& s);
    // The session ended: an object Office still holds answers 429.
    void detach() { s_ = nullptr; }
    Str readCalendar(std::int32_t firstDay, std::int32_t lastDay);

  private:
    static std::shared_ptr<const MemberTable> table();
    Session* s_;
};

}  // namespace hb

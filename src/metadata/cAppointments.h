#pragma once
// Watches the items of the default calendar folder and resets the
// posted date "strPosted" of every added item to 1 January 4501 (not posted).
#include "common/Object.h"
#include "common/Session.h"

namespace hb {

// 1 January 4501, 00:00: the platform's empty date, meaning "not posted".
constexpr double kNotPostedDay = 949998.0;

class cAppointments {
  public:
    // Takes the Items of Session::ofCalendar and subscribes to its
    // "ItemsEvents"; raises when that cannot be done (91 without a calendar).
    explicit cAppointments(Session& s);
    ~cAppointments();  // releases the reference, which stops the events
    cAppointments(const cAppointments&) = delete;
    cAppointments& operator=(const cAppointments&) = delete;

    // The ItemAdd handler; errors are ignored throughout.
    void ouiApps_ItemAdd(const Variant& item) noexcept;

    const Variant& ouiApps() const { return ouiApps_; }

  private:
    Session& s_;
    Variant ouiApps_;
    EventConnection events_;
};

}  // namespace hb

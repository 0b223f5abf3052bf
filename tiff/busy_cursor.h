// The wait cursor while a picture is drawn.
#pragma once

#include "platform/ui.h"

namespace tympan {

class BusyCursor {
  public:
    BusyCursor() { SetCursor(LoadCursor(nullptr, IDC_WAIT)); }
    BusyCursor(const BusyCursor&) = delete;
    BusyCursor& operator=(const BusyCursor&) = delete;
    ~BusyCursor() { SetCursor(LoadCursor(nullptr, IDC_UPARROW)); }
};

} // namespace tympan

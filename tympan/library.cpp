// What happens when the library is loaded and unloaded: it tells the platform of itself, and no
// more.
#include "platform/module.h"

namespace {

class Registration {
  public:
    Registration()
    {
        if (AfxInitExtensionModule(state_, nullptr))
            new CDynLinkLibrary(state_); // the platform's list owns it until the unloading
    }
    Registration(const Registration&) = delete;
    Registration& operator=(const Registration&) = delete;
    ~Registration() { AfxTermExtensionModule(state_); }

  private:
    AFX_EXTENSION_MODULE state_;
};

const Registration kRegistration;

} // namespace

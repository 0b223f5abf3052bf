// Stands in for the platform's calls by which a library tells that it was loaded or is going away.
#pragma once

#include "platform/export.h"
#include "platform/types.h"

#include <vector>

namespace tympan {
struct LoadedModule;
}

/// A loaded module's handle; never looked into.
using HINSTANCE = tympan::LoadedModule*;

/// What a library keeps about itself from load to unload; all zero at the start.
struct AFX_EXTENSION_MODULE {
    BOOL bInitialized = FALSE;
    HINSTANCE hModule = nullptr;
};

/// Notes the module's handle. A second call changes nothing.
/// \return TRUE: nothing in it can fail.
TYMPAN_API BOOL AfxInitExtensionModule(AFX_EXTENSION_MODULE& state, HINSTANCE module);

/// Destroys the CDynLinkLibrary objects of the module and empties `state`. Nothing for one that was
/// not initialised.
TYMPAN_API void AfxTermExtensionModule(AFX_EXTENSION_MODULE& state, BOOL all = FALSE);

/// A module's entry in the list of loaded ones, from construction to destruction. To be made with
/// `new`; AfxTermExtensionModule() destroys it.
class TYMPAN_API CDynLinkLibrary {
  public:
    explicit CDynLinkLibrary(AFX_EXTENSION_MODULE& state, BOOL system = FALSE);
    CDynLinkLibrary(const CDynLinkLibrary&) = delete;
    CDynLinkLibrary& operator=(const CDynLinkLibrary&) = delete;
    virtual ~CDynLinkLibrary();

    HINSTANCE m_hModule;
    BOOL m_bSystem;
};

namespace tympan {

/// The modules that have an entry, in the order of loading.
TYMPAN_API std::vector<HINSTANCE> LoadedExtensionModules();

} // namespace tympan

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
    BOOL bInitialized = FALSE;   ///< whether `AfxInitExtensionModule` has been called
    HINSTANCE hModule = nullptr; ///< the handle that it was given
};

/// Notes the module's handle. A second call changes nothing.
/// \return TRUE: nothing in it can fail.
TYMPAN_API BOOL AfxInitExtensionModule(AFX_EXTENSION_MODULE& state, HINSTANCE module);

/// Destroys the CDynLinkLibrary objects of the module and empties `state`. Nothing for one that was
/// not initialised. `all` has no effect.
TYMPAN_API void AfxTermExtensionModule(AFX_EXTENSION_MODULE& state, BOOL all = FALSE);

/// A module's entry in the list of loaded ones, from construction to destruction. To be made with
/// `new`; AfxTermExtensionModule() destroys it.
class TYMPAN_API CDynLinkLibrary {
  public:
    /// Puts an entry for the module of `state` behind those that there are.
    /// \param system kept in `m_bSystem`; no effect.
    /// \throws std::bad_alloc.
    explicit CDynLinkLibrary(AFX_EXTENSION_MODULE& state, BOOL system = FALSE);
    CDynLinkLibrary(const CDynLinkLibrary&) = delete;
    CDynLinkLibrary& operator=(const CDynLinkLibrary&) = delete;
    /// Takes the entry out of the list.
    virtual ~CDynLinkLibrary();

    HINSTANCE m_hModule; ///< the module's handle
    BOOL m_bSystem;      ///< as given at construction
};

namespace tympan {

/// The modules that have an entry, in the order of loading.
TYMPAN_API std::vector<HINSTANCE> LoadedExtensionModules();

} // namespace tympan

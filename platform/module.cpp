// The list of loaded modules.
#include "platform/module.h"

#include <algorithm>
#include <memory>
#include <mutex>

namespace {

struct LoadedModules {
    std::mutex mutex;
    std::vector<CDynLinkLibrary*> entries; // each takes itself out when it is destroyed
};

LoadedModules& Loaded()
{
    static LoadedModules loaded;
    return loaded;
}

// An entry of the module, null when there is none left.
CDynLinkLibrary* EntryOf(HINSTANCE module)
{
    const std::lock_guard lock(Loaded().mutex);
    const auto& entries = Loaded().entries;
    const auto found = std::find_if(entries.begin(), entries.end(),
                                    [&](const auto* entry) { return entry->m_hModule == module; });
    return found == entries.end() ? nullptr : *found;
}

} // namespace

BOOL AfxInitExtensionModule(AFX_EXTENSION_MODULE& state, HINSTANCE module)
{
    if (!state.bInitialized)
        state = { TRUE, module };
    return TRUE;
}

void AfxTermExtensionModule(AFX_EXTENSION_MODULE& state, BOOL)
{
    if (!state.bInitialized)
        return;
    while (CDynLinkLibrary* entry = EntryOf(state.hModule))
        delete entry;
    state = {};
}

CDynLinkLibrary::CDynLinkLibrary(AFX_EXTENSION_MODULE& state, BOOL system)
    : m_hModule(state.hModule), m_bSystem(system)
{
    const std::lock_guard lock(Loaded().mutex);
    Loaded().entries.push_back(this);
}

CDynLinkLibrary::~CDynLinkLibrary()
{
    const std::lock_guard lock(Loaded().mutex);
    std::erase(Loaded().entries, this);
}

std::vector<HINSTANCE> tympan::LoadedExtensionModules()
{
    const std::lock_guard lock(Loaded().mutex);
    std::vector<HINSTANCE> modules;
    for (const CDynLinkLibrary* entry : Loaded().entries)
        modules.push_back(entry->m_hModule);
    return modules;
}

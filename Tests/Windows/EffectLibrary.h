// The built library, loaded for as long as a test wants it.
#pragma once

#include "Vst24.h"

#include <filesystem>

#include <windows.h>

namespace qel::test {

class EffectLibrary
{
public:
    // Beside the folder of this program: the path at build time is that of another system.
    static std::filesystem::path path()
    {
        std::wstring program(32768, L'\0');
        program.resize(GetModuleFileNameW(nullptr, program.data(), static_cast<DWORD>(program.size())));
        return std::filesystem::path(program).parent_path().parent_path() / "Drumfell.dll";
    }

    explicit EffectLibrary(const std::filesystem::path& file = path()) : handle_(LoadLibraryW(file.c_str()))
    {}
    EffectLibrary(const EffectLibrary&) = delete;
    EffectLibrary& operator=(const EffectLibrary&) = delete;
    ~EffectLibrary()
    {
        if (handle_) {
            FreeLibrary(handle_);
        }
    }

    HMODULE handle() const { return handle_; }
    // For a host that answers nothing but its version.
    AEffect* makeEffect() const
    {
        const auto entry = reinterpret_cast<VstPluginEntry>(
            reinterpret_cast<void*>(GetProcAddress(handle_, "VSTPluginMain")));
        return entry ? entry(&answer) : nullptr;
    }

private:
    static std::intptr_t answer(AEffect*, std::int32_t opcode, std::int32_t, std::intptr_t, void*, float)
    {
        return opcode == vst24::kMasterVersion ? 2400 : 0;
    }

    HMODULE handle_;
};

} // namespace qel::test

// A small host: loads the library as any other would and sees nothing of it but its two entries.
#define QEL_DEFINE_ALLOCATION_GUARD
#include "HostRig.h"

#include "AllocationGuard.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <numbers>
#include <stdexcept>
#include <utility>

#ifdef _WIN32
#include <filesystem>

#include <windows.h>
#else
#include <dlfcn.h>
#include <sys/wait.h>
#include <unistd.h>
#endif

namespace qel::test {

namespace {

// Between the call of the entry and its return.
thread_local Host* beginning = nullptr;

#ifdef _WIN32

// Beside the folder of this program: the path at build time is that of another system.
HMODULE library()
{
    static const HMODULE handle = [] {
        std::wstring program(MAX_PATH, L'\0');
        program.resize(GetModuleFileNameW(nullptr, program.data(), MAX_PATH));
        return LoadLibraryW(
            (std::filesystem::path(program).parent_path().parent_path() / "Drumfell.dll").c_str());
    }();
    return handle;
}

void* findEntry(const char* name)
{
    return library() ? reinterpret_cast<void*>(GetProcAddress(library(), name)) : nullptr;
}

std::string loadFault()
{
    return "the library cannot be loaded: " + std::to_string(GetLastError());
}

#else

void* loaded = nullptr;
std::mutex loading; // tests start effects in several threads

void* library()
{
    const std::lock_guard lock(loading);
    if (!loaded) {
        setenv("XDG_DATA_HOME", dataFolder.c_str(), 1);
        loaded = dlopen(DRUMFELL_LIBRARY, RTLD_NOW | RTLD_LOCAL);
    }
    return loaded;
}

void* findEntry(const char* name)
{
    return library() ? dlsym(library(), name) : nullptr;
}

std::string loadFault()
{
    return dlerror();
}

#endif

} // namespace

#ifndef _WIN32
void unloadLibrary()
{
    dlclose(std::exchange(loaded, nullptr));
}
#endif

VstPluginEntry loadEntry(const char* name)
{
    void* const entry = findEntry(name);
    if (!entry) {
        throw std::runtime_error(loadFault());
    }
    return reinterpret_cast<VstPluginEntry>(entry);
}

Host::Host(HostTraits traits) : traits_(std::move(traits))
{
    beginning = this;
    effect_ = loadEntry()(&callback);
    beginning = nullptr;
    if (!effect_) {
        throw std::runtime_error("no effect");
    }
    effect_->hostWords[0] = reinterpret_cast<std::intptr_t>(this);
}

void Host::close()
{
    if (effect_) {
        call(vst24::kClose);
        effect_ = nullptr;
    }
}

std::intptr_t Host::callback(AEffect* effect, std::int32_t opcode, std::int32_t, std::intptr_t, void* ptr,
                             float)
{
    Host* host = effect && effect->hostWords[0] ? reinterpret_cast<Host*>(effect->hostWords[0]) : beginning;
    if (!host) {
        return 0;
    }
    if (opcode == vst24::kMasterVersion) {
        return host->traits_.version;
    }
    if (host->traits_.answersOnlyVersion) {
        return 0;
    }
    switch (opcode) {
    case vst24::kMasterAutomate:
        ++host->automations;
        if (host->whenAutomated) {
            host->whenAutomated();
        }
        return 1;
    case vst24::kMasterUpdateDisplay:
        ++host->displayUpdates;
        if (host->whenUpdated) {
            host->whenUpdated();
        }
        return 1;
    case vst24::kMasterIOChanged:
        ++host->ioChanges;
        return 1;
    case vst24::kMasterGetVendorString:
        std::strcpy(static_cast<char*>(ptr), host->traits_.vendor.c_str());
        return 1;
    case vst24::kMasterGetProductString:
        std::strcpy(static_cast<char*>(ptr), host->traits_.product.c_str());
        return 1;
    case vst24::kMasterGetCurrentProcessLevel:
        return vst24::kLevelRealtime;
    default:
        return 0;
    }
}

std::string Host::text(std::int32_t opcode, std::size_t limit, std::int32_t index, std::intptr_t value)
{
    std::vector<char> memory(limit + 256, '#');
    call(opcode, index, value, memory.data());
    const auto end = std::find(memory.begin(), memory.end(), '\0');
    EXPECT_LT(end - memory.begin(), static_cast<std::ptrdiff_t>(limit)) << "opcode " << opcode;
    EXPECT_EQ(std::string(memory.begin() + static_cast<std::ptrdiff_t>(limit), memory.end()),
              std::string(256, '#'));
    return {memory.begin(), end};
}

void Host::start(float rateHz, std::int32_t blockSize)
{
    call(vst24::kOpen);
    call(vst24::kSetSampleRate, 0, 0, nullptr, rateHz);
    call(vst24::kSetBlockSize, 0, blockSize);
    call(vst24::kMainsChanged, 0, 1);
}

void Host::setAll(unsigned seed)
{
    std::mt19937 random(seed);
    for (std::int32_t i = 1; i < effect_->numParams; ++i) { // 0 is the bypass
        set(i, static_cast<float>(random() % 1001) / 1000.0f);
    }
}

std::vector<float> Host::getAll()
{
    std::vector<float> values;
    for (std::int32_t i = 0; i < effect_->numParams; ++i) {
        values.push_back(get(i));
    }
    return values;
}

Bytes Host::chunk(bool isPreset)
{
    void* data = nullptr;
    const std::intptr_t size = call(vst24::kGetChunk, isPreset, 0, &data);
    const auto* bytes = static_cast<const std::uint8_t*>(data);
    return bytes ? Bytes(bytes, bytes + size) : Bytes();
}

template <class Sample>
Channels<Sample> drums(std::size_t length, std::size_t channels)
{
    Channels<Sample> signal(channels, std::vector<Sample>(length));
    std::minstd_rand noise(1);
    for (std::size_t i = 0; i < length; ++i) {
        const double t = static_cast<double>(i % 12000) / 48000.0;
        const double tone =
            std::exp(-12.0 * t) * std::sin(2.0 * std::numbers::pi * (60.0 * t + 6.0 * std::sqrt(t)));
        for (std::size_t channel = 0; channel < channels; ++channel) {
            const double hiss = static_cast<double>(noise()) / noise.max() - 0.5;
            signal[channel][i] = static_cast<Sample>(static_cast<float>(0.7 * tone + 0.05 * hiss));
        }
    }
    return signal;
}
template Channels<float> drums(std::size_t, std::size_t);
template Channels<double> drums(std::size_t, std::size_t);

#ifndef _WIN32
std::vector<double> inChild(const std::function<std::vector<double>()>& work)
{
    loadEntry();
    int ends[2] = {};
    if (pipe(ends) != 0) {
        throw std::runtime_error("no pipe");
    }
    const bool hasFailedBefore = testing::Test::HasFailure();
    const pid_t child = fork();
    if (child == 0) {
        const std::vector<double> result = work();
        const char* from = reinterpret_cast<const char*>(result.data());
        for (std::size_t left = result.size() * sizeof(double); left > 0;) {
            const ssize_t written = write(ends[1], from, left);
            if (written <= 0) {
                _exit(2);
            }
            from += written;
            left -= static_cast<std::size_t>(written);
        }
        _exit(testing::Test::HasFailure() && !hasFailedBefore ? 1 : 0);
    }
    ::close(ends[1]);
    std::string bytes;
    char part[65536];
    for (ssize_t count = 0; (count = read(ends[0], part, sizeof part)) > 0;) {
        bytes.append(part, static_cast<std::size_t>(count));
    }
    ::close(ends[0]);
    int status = 0;
    waitpid(child, &status, 0);
    EXPECT_EQ(status, 0);
    std::vector<double> result(bytes.size() / sizeof(double));
    std::copy_n(bytes.data(), result.size() * sizeof(double), reinterpret_cast<char*>(result.data()));
    return result;
}
#endif

} // namespace qel::test

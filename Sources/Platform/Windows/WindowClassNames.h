// Names of the classes of the interface's windows.
#pragma once

namespace qel::platform {

inline constexpr const wchar_t* kInterfaceClassName = L"UIWindow";
inline constexpr const wchar_t* kBridgeClassName = L"Bridge";

} // namespace qel::platform

// SPDX-License-Identifier: MIT
// Creates and initialises the object, and says in words why that failed.
#include "process/api_session.h"

#include "base/failure.h"
#include "base/results.h"
#include "process/registered_file.h"

namespace kora4::tools {

namespace {

constexpr char cRegister[] =
    "Register the library, as an administrator: kora4ctl register PATH\\QXA64T.dll";

}  // namespace

ApiSession::Apartment::Apartment() {
    const HRESULT hr = CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED);
    if (FAILED(hr))
        throw Failure(ExitCode::eFailed, "COM cannot be initialised: " + InWords(hr) + ".");
}

ApiSession::Apartment::~Apartment() {
    CoUninitialize();
}

ApiSession::ApiSession() {
    HRESULT hr = CoCreateInstance(CLSID_VeltoKORA4APITestCoclass, nullptr, CLSCTX_INPROC_SERVER,
                                  IID_IVeltoKORA4API,
                                  reinterpret_cast<void**>(m_api.ReleaseAndGetAddressOf()));
    if (hr == REGDB_E_CLASSNOTREG)
        throw Failure(ExitCode::eNotReady, "The library is not registered on this machine.",
                      cRegister);
    if (FAILED(hr) && IsRegisteredFileMissing())
        throw Failure(ExitCode::eNotReady,
                      "The registered file does not exist: " + RegisteredFile(), cRegister);
    if (FAILED(hr))
        throw Failure(ExitCode::eNotReady,
                      "The registered library cannot be loaded: " + InWords(hr) + ".",
                      "See what is registered: kora4ctl register --check");
    hr = m_api->Initialize();
    if (FAILED(hr))
        throw Failure(ExitCode::eNotReady,
                      "The library cannot reach its settings: " + InWords(hr) + ".",
                      "Find out why: kora4ctl doctor");
}

ApiSession::~ApiSession() = default;

}  // namespace kora4::tools

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

Api InitialisedIn(const ApartmentGuard& apartment) {
    if (apartment.Status().HasFailed())
        throw Failure(ExitCode::eFailed,
                      "COM cannot be initialised: " + InWords(apartment.Status().Code()) + ".");
    Result<Api> api = Api::Create();
    if (api.Code() == REGDB_E_CLASSNOTREG)
        throw Failure(ExitCode::eNotReady, "The library is not registered on this machine.",
                      cRegister);
    if (!api && IsRegisteredFileMissing())
        throw Failure(ExitCode::eNotReady,
                      "The registered file does not exist: " + RegisteredFile(), cRegister);
    if (!api)
        throw Failure(ExitCode::eNotReady,
                      "The registered library cannot be loaded: " + InWords(api.Code()) + ".",
                      "See what is registered: kora4ctl register --check");
    if (const Status ready = api->Initialize(); ready.HasFailed())
        throw Failure(ExitCode::eNotReady,
                      "The library cannot reach its settings: " + InWords(ready.Code()) + ".",
                      "Find out why: kora4ctl doctor");
    return *std::move(api);
}

}  // namespace

ApiSession::ApiSession()
    : m_apartment(ApartmentKind::eSingleThreaded), m_api(InitialisedIn(m_apartment)) {}

}  // namespace kora4::tools

// SPDX-License-Identifier: MIT
// One API object with its callback, and the settings as it reads and sets them. Belongs to the
// worker's thread.
#ifndef KORA4_PANEL_WORKER_CONNECTION_H
#define KORA4_PANEL_WORKER_CONNECTION_H

#include <kora4.hpp>

#include <memory>

#include "panel/worker/inbox.h"

namespace panel {

// As the API has it.
KORA4APITechnology ApiTechnology(std::size_t index);

class ApiLink {
  public:
    // Creates the object, registers the callback and reads everything, in this order. Null when
    // it cannot: `code` says why.
    static std::unique_ptr<ApiLink> Open(Inbox& inbox, HRESULT& code);
    // Releases the object; nothing is announced any more afterwards.
    ~ApiLink();
    ApiLink(const ApiLink&) = delete;
    ApiLink& operator=(const ApiLink&) = delete;

    const Settings& Current() const { return m_settings; }
    kora4::Api& Api() { return m_api; }

    // Each reads again what is stored. False: the store is not there any more.
    bool ReadAll();
    bool Read(const Announced& announced);

    // Makes the call that sets the item, which is no single band, and reads again what it may
    // have changed.
    HRESULT Set(const Item& item);
    // Creates it where none is, and makes it the active one.
    HRESULT Create(const std::wstring& name);
    // Enters no demo and leaves it, whoever entered it.
    HRESULT LeaveDemo();

  private:
    ApiLink(kora4::Api api, Microsoft::WRL::ComPtr<kora4::Callback> listener);

    void ReadSwitch(std::size_t technology);
    void ReadValue(std::size_t technology);
    void ReadBands();
    void ReadTable();
    bool ReadEnable();
    HRESULT SetProfile(long profile);
    HRESULT SetName(const Item& item);

    kora4::Api m_api;
    const Microsoft::WRL::ComPtr<kora4::Callback> m_listener;
    Settings m_settings;
};

}  // namespace panel

#endif  // KORA4_PANEL_WORKER_CONNECTION_H

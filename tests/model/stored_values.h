// SPDX-License-Identifier: MIT
// The store as the registry holds it, to compare with the model.
#ifndef KORA4_TESTS_MODEL_STORED_VALUES_H
#define KORA4_TESTS_MODEL_STORED_VALUES_H

#include <windows.h>

#include <optional>
#include <string>

#include "model/store_model.h"
#include "platform/handles.h"

namespace kora4::test {

// Keeps its keys open, which must exist.
class StoredValues {
  public:
    StoredValues();

    std::optional<StoreModel::Value> Read(const StoreModel::Address& address) const;
    StoreModel::Values ReadAll() const;
    void Write(const StoreModel::Address& address, const StoreModel::Value& value) const;

  private:
    HKEY KeyOf(bool dynamic) const { return (dynamic ? m_dynamic : m_static).Get(); }

    UniqueRegKey m_static;
    UniqueRegKey m_dynamic;
};

std::string Text(const StoreModel::Address& address,
                 const std::optional<StoreModel::Value>& value);

// Each address at which the two differ, one a line; empty when they are equal.
std::string Difference(const StoreModel::Values& model, const StoreModel::Values& stored);

}  // namespace kora4::test

#endif  // KORA4_TESTS_MODEL_STORED_VALUES_H

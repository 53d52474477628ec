#include "FieldTable.h"

#include "FieldCodecs.h"
#include "SettingStore.h"

namespace {
// The fields' values grouped by store, stores in the order the table first names them.
using StoreValues = QList<std::pair<SettingStore *, SettingStore::Values>>;

SettingStore::Values &ValuesOf(StoreValues &groups, SettingStore *store)
{
    for (auto &[groupStore, values] : groups) {
        if (groupStore == store)
            return values;
    }
    groups.emplaceBack(store, SettingStore::Values());
    return groups.last().second;
}
} // namespace

const FieldBinding *FieldTable::Find(const QString &control) const
{
    for (const FieldBinding &field : m_fields) {
        if (field.control == control)
            return &field;
    }
    return nullptr;
}

void FieldTable::Load(QWidget &page) const
{
    StoreValues defaults;
    for (const FieldBinding &field : m_fields) {
        if (field.store)
            ValuesOf(defaults, field.store).insert(field.key, field.defaultValue);
    }
    StoreValues stored;
    for (const auto &[store, values] : defaults)
        stored.emplaceBack(store, store->Read(values));
    for (const FieldBinding &field : m_fields) {
        if (field.store)
            FieldCodecs::Show(page, field,
                              ValuesOf(stored, field.store).value(field.key, field.defaultValue));
    }
}

void FieldTable::Store(const QWidget &page) const
{
    StoreValues taken;
    for (const FieldBinding &field : m_fields) {
        if (field.store)
            ValuesOf(taken, field.store).insert(field.key, FieldCodecs::Take(page, field));
    }
    for (const auto &[store, values] : taken)
        store->Write(values);
}

#pragma once

#include "AddressBook.h"

/// An address book of one card, or none.
class FakeAddressBook final : public AddressBook
{
public:
    [[nodiscard]] QString primaryEmailAddressOfMe() const override { return m_address; }

    void setAddress(const QString& address) { m_address = address; }

private:
    QString m_address;
};

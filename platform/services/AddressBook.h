#pragma once

#include <QString>

/// Who the user of the machine is, as far as the user has told. Main thread.
class AddressBook
{
public:
    virtual ~AddressBook() = default;
    /// The primary e-mail address of the user's own card; a null string when there is no card, no
    /// address on it or none of them is the primary one.
    [[nodiscard]] virtual QString primaryEmailAddressOfMe() const = 0;
};

/// For systems without an address book that knows its owner: nobody is looked up anywhere.
class NoAddressBook final : public AddressBook
{
public:
    [[nodiscard]] QString primaryEmailAddressOfMe() const override { return {}; }
};

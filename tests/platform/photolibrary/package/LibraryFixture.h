#pragma once

#include "Connection.h"
#include "Queries.h"
#include "Writer.h"

#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <memory>

/// A new library in a temporary folder, open inside a transaction, and photos to put into it. All
/// tests of a run share it, as each rolls back what it did.
class LibraryFixture : public testing::Test
{
protected:
    void SetUp() override;
    void TearDown() override;

    struct Photo {
        qint64 visible{0};  ///< id of the version that the user sees
        qint64 imported{0}; ///< id of the version as imported
        QString visibleUuid;
        QString master;
        QString event;
    };

    /// What a new photo is like.
    struct Kind {
        QString fileName{QStringLiteral("IMG_1.JPG")};
        QString group{QStringLiteral("2010/05/01/20100501-120000")};
        double date{294408000.0};
        bool isReference{false};
    };

    /// A photo in an event.
    Photo addPhoto(const QString& event, const Kind& kind);
    Photo addPhoto(const QString& event);
    /// Makes a second master the partner of the photo's own, as a pair of a RAW and a JPEG file has
    /// it; returns its uuid.
    QString addPartner(const Photo& photo, const QString& fileName);

    [[nodiscard]] QString package() const;

    [[nodiscard]] Connection& connection() { return *m_connection; }

    [[nodiscard]] Writer writer() { return {*m_connection, m_changes, m_now}; }

    [[nodiscard]] Changes& changes() { return m_changes; }

    /// Every row of every table that operations touch, times of change left out.
    [[nodiscard]] QStringList snapshot();
    [[nodiscard]] qint64 number(const char* sql, qint64 id);
    void expectSoundIndexes();

    double m_now{800000000.25};

private:
    qint64 addMaster(const QString& uuid, const QString& event, const Kind& kind);
    qint64 addVersion(const Photo& photo, qint64 masterId, int versionNumber, const Kind& kind);
    void addProxy(const Photo& photo, const Kind& kind);

    std::unique_ptr<Connection> m_connection;
    Changes m_changes;
};

/// The databases of a library that iPhoto 9.6.1 itself wrote, copied to a temporary folder; none
/// where they are not at hand.
class RealLibrary final
{
public:
    RealLibrary();

    [[nodiscard]] bool isPresent() const { return m_connection != nullptr; }

    [[nodiscard]] Connection& connection() { return *m_connection; }

    [[nodiscard]] QString package() const;

private:
    QTemporaryDir m_folder;
    std::unique_ptr<Connection> m_connection;
};

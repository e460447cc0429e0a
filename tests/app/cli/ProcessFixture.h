#pragma once

#include "CommandFixture.h"

#include <QProcess>
#include <QProcessEnvironment>

/// The program as a process of its own, with a home of its own.
class ProcessFixture : public CommandFixture
{
protected:
    void SetUp() override
    {
        CommandFixture::SetUp();
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        environment.insert(QStringLiteral("HOME"), m_home.path());
        environment.insert(QStringLiteral("LC_ALL"), QStringLiteral("C.UTF-8"));
        environment.remove(QStringLiteral("NO_COLOR"));
        environment.insert(QStringLiteral("TERM"), QStringLiteral("xterm"));
        m_process.setProcessEnvironment(environment);
        m_process.setProgram(QStringLiteral(CORVANE_CLI));
    }

    void TearDown() override
    {
        if (m_process.state() != QProcess::NotRunning) {
            m_process.kill();
            m_process.waitForFinished();
        }
    }

    void start(const QStringList& arguments)
    {
        m_process.setArguments(arguments);
        m_process.start();
        ASSERT_TRUE(m_process.waitForStarted());
    }

    /// The exit status; -1 when it was ended by a signal.
    int finish()
    {
        EXPECT_TRUE(m_process.waitForFinished(60000));
        return m_process.exitStatus() == QProcess::NormalExit ? m_process.exitCode() : -1;
    }

    QTemporaryDir m_home;
    QProcess m_process;
};

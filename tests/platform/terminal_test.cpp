#include "platform/terminal.h"

#include <cstdlib>
#include <fcntl.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include <gtest/gtest.h>

namespace quillon {

namespace {

// Puts another descriptor in the place of standard error until the end of the scope.
class CErrorStreamAt {
  public:
    explicit CErrorStreamAt(int descriptor) : m_saved(dup(STDERR_FILENO)) { dup2(descriptor, STDERR_FILENO); }
    CErrorStreamAt(const CErrorStreamAt&) = delete;
    CErrorStreamAt& operator=(const CErrorStreamAt&) = delete;
    ~CErrorStreamAt() {
        dup2(m_saved, STDERR_FILENO);
        close(m_saved);
    }

  private:
    int m_saved;
};

// A pseudo-terminal: what is printed on Terminal() could be read on the other end.
class CPseudoTerminal {
  public:
    CPseudoTerminal() : m_master(posix_openpt(O_RDWR | O_NOCTTY)) {
        char name[64];
        if (m_master >= 0 && grantpt(m_master) == 0 && unlockpt(m_master) == 0 &&
            ptsname_r(m_master, name, sizeof name) == 0)
            m_terminal = open(name, O_RDWR | O_NOCTTY);
    }
    CPseudoTerminal(const CPseudoTerminal&) = delete;
    CPseudoTerminal& operator=(const CPseudoTerminal&) = delete;
    ~CPseudoTerminal() {
        close(m_terminal);
        close(m_master);
    }
    [[nodiscard]] int Terminal() const { return m_terminal; }
    void SetWidth(unsigned short columns) const {
        const winsize size{24, columns, 0, 0};
        ioctl(m_master, TIOCSWINSZ, &size);
    }

  private:
    int m_master = -1;
    int m_terminal = -1;
};

} // namespace

TEST(Terminal, FileIsNoTerminalAndHasTheDefaultWidth) {
    const int file = open("/dev/null", O_WRONLY);
    ASSERT_GE(file, 0);
    {
        const CErrorStreamAt redirection(file);
        EXPECT_FALSE(IsTerminal(EStream::Error));
        EXPECT_EQ(TerminalWidth(EStream::Error), 80);
    }
    close(file);
}

TEST(Terminal, TerminalTellsItsWidth) {
    const CPseudoTerminal terminal;
    ASSERT_GE(terminal.Terminal(), 0);
    const CErrorStreamAt redirection(terminal.Terminal());
    terminal.SetWidth(133);
    EXPECT_TRUE(IsTerminal(EStream::Error));
    EXPECT_EQ(TerminalWidth(EStream::Error), 133);
}

TEST(Terminal, TerminalThatDoesNotKnowItsWidthHasTheDefault) {
    const CPseudoTerminal terminal;
    ASSERT_GE(terminal.Terminal(), 0);
    const CErrorStreamAt redirection(terminal.Terminal());
    terminal.SetWidth(0);
    EXPECT_TRUE(IsTerminal(EStream::Error));
    EXPECT_EQ(TerminalWidth(EStream::Error), 80);
}

} // namespace quillon

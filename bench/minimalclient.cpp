// The least a client can do to poll the line: write a level read, wait for
// the reply's carriage return, write the next. No framework and no UI; the
// program's polling is measured against it on the same simulated line.
//
// usage: minimalclient DEVICE BAUD RECEIVERS SECONDS
// prints "cpu_seconds wall_seconds exchanges" when done.
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <ctime>

#include <fcntl.h>
#include <poll.h>
#include <sys/resource.h>
#include <termios.h>
#include <unistd.h>

namespace {

speed_t speedCode(long baud)
{
    switch (baud) {
    case 9600:
        return B9600;
    case 19200:
        return B19200;
    case 38400:
        return B38400;
    case 57600:
        return B57600;
    default:
        return B115200;
    }
}

double now()
{
    timespec t{};
    clock_gettime(CLOCK_MONOTONIC, &t);
    return static_cast<double>(t.tv_sec) + static_cast<double>(t.tv_nsec) / 1e9;
}

// True once a carriage return came within the time-out.
bool readReply(int fd, int timeoutMillis)
{
    const double deadline = now() + timeoutMillis / 1000.0;
    char buffer[64];
    for (;;) {
        const int left = static_cast<int>((deadline - now()) * 1000.0) + 1;
        pollfd p{fd, POLLIN, 0};
        if (left <= 0 || ::poll(&p, 1, left) <= 0)
            return false;
        const ssize_t n = ::read(fd, buffer, sizeof buffer);
        if (n < 0 && errno != EAGAIN && errno != EINTR)
            return false;
        for (ssize_t i = 0; i < n; ++i)
            if (buffer[i] == '\r')
                return true;
    }
}

} // namespace

int main(int argc, char **argv)
{
    if (argc != 5) {
        std::fputs("usage: minimalclient DEVICE BAUD RECEIVERS SECONDS\n", stderr);
        return 2;
    }
    const int fd = ::open(argv[1], O_RDWR | O_NOCTTY | O_NONBLOCK | O_CLOEXEC);
    if (fd < 0) {
        std::perror(argv[1]);
        return 1;
    }
    termios t{};
    tcgetattr(fd, &t);
    cfmakeraw(&t);
    cfsetspeed(&t, speedCode(std::atol(argv[2])));
    t.c_cc[VMIN] = 0;
    t.c_cc[VTIME] = 0;
    tcsetattr(fd, TCSANOW, &t);
    tcflush(fd, TCIOFLUSH);

    const int receivers = std::atoi(argv[3]);
    const double end = now() + std::atof(argv[4]);
    const double start = now();
    long exchanges = 0;
    static const char digits[] = "0123456789ABCDEF";
    while (now() < end) {
        for (int address = 1; address <= receivers; ++address) {
            const char frame[5] = {'%', digits[address >> 4], digits[address & 15], 'N', '\r'};
            if (::write(fd, frame, sizeof frame) != static_cast<ssize_t>(sizeof frame))
                return 1;
            readReply(fd, 250);
            ++exchanges;
        }
    }
    rusage usage{};
    getrusage(RUSAGE_SELF, &usage);
    const double cpu = static_cast<double>(usage.ru_utime.tv_sec + usage.ru_stime.tv_sec) +
                       static_cast<double>(usage.ru_utime.tv_usec + usage.ru_stime.tv_usec) / 1e6;
    std::printf("%.6f %.6f %ld\n", cpu, now() - start, exchanges);
    return 0;
}

#include <cstring>
#include <thread>

// What the tools that watch the tests are there to find, so that a run without findings means something.

namespace {

void leak(int size)
{
    char* volatile lost = new char[static_cast<unsigned>(size)];
    lost[0] = 'x';
    lost = nullptr;
}

int race()
{
    int counter = 0;
    auto const count = [&counter] {
        for (int i = 0; i < 1000; ++i) {
            ++counter;
        }
    };
    std::thread other(count);
    count();
    other.join();
    return counter;
}

} // namespace

int main(int argc, char** argv)
{
    if (argc == 2 && std::strcmp(argv[1], "race") == 0) {
        return race() > 0 ? 0 : 1;
    }
    leak(argc * 1000);
    return 0;
}

#include "SmallStack.h"

#include <QThread>
#include <memory>

void runOnSmallStack(std::function<void()> const& body)
{
#ifdef __SANITIZE_THREAD__
    // The sanitizer keeps what it knows of a thread on that thread's stack.
    constexpr unsigned int stackSize = 4 * 512 * 1024;
#else
    constexpr unsigned int stackSize = 512 * 1024;
#endif
    std::unique_ptr<QThread> const thread(QThread::create(body));
    thread->setStackSize(stackSize);
    thread->start();
    thread->wait();
}

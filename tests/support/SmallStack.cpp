#include "SmallStack.h"

#include <QThread>
#include <memory>

void runOnSmallStack(std::function<void()> const& body)
{
    constexpr unsigned int stackSize = 512 * 1024;
    std::unique_ptr<QThread> const thread(QThread::create(body));
    thread->setStackSize(stackSize);
    thread->start();
    thread->wait();
}

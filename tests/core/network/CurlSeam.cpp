#include "CurlSeam.h"

#include <cstdarg>
#include <dlfcn.h>
#include <mutex>
#include <utility>

#undef curl_easy_setopt
#undef curl_easy_getinfo

namespace {

std::mutex& seamMutex()
{
    static std::mutex mutex;
    return mutex;
}

/// How deep this thread is in libcurl, which calls some of these functions itself.
thread_local int depth = 0;

struct InsideLibcurl
{
    InsideLibcurl() { ++depth; }
    ~InsideLibcurl() { --depth; }
};

/// libcurl's own function under the name of one defined below.
template <typename Function>
Function* original(char const* name)
{
    return reinterpret_cast<Function*>(dlsym(RTLD_NEXT, name));
}

/// Calls libcurl's own function \a name.
template <typename Function, typename... Arguments>
auto inside(char const* name, Arguments... arguments)
{
    InsideLibcurl const guard;
    return original<Function>(name)(arguments...);
}

/// What this thread's transfer is told when a test answers in libcurl's place.
thread_local CURLMsg answered = {};

bool isAnswered()
{
    return answered.msg == CURLMSG_DONE;
}

QStringList linesOf(curl_slist const* list)
{
    QStringList lines;
    for (; list != nullptr; list = list->next) {
        lines += QString::fromUtf8(list->data);
    }
    return lines;
}

} // namespace

CurlSeam& CurlSeam::instance()
{
    static CurlSeam seam;
    return seam;
}

void CurlSeam::reset()
{
    instance() = CurlSeam();
}

QStringList CurlSeam::optionTexts() const
{
    QStringList texts;
    for (Option const& option : options) {
        texts += option.text;
    }
    return texts;
}

void* CurlSeam::pointer(CURLoption id) const
{
    for (Option const& option : options) {
        if (option.id == id) {
            return option.pointer;
        }
    }
    return nullptr;
}

extern "C" {

CURLcode curl_global_init(long flags)
{
    CurlSeam::instance().globalInits += flags;
    return original<CURLcode(long)>("curl_global_init")(flags);
}

void curl_global_cleanup()
{
    ++CurlSeam::instance().globalCleanups;
    original<void()>("curl_global_cleanup")();
}

CURL* curl_easy_init()
{
    if (depth == 0) {
        std::lock_guard const lock(seamMutex());
        if (CurlSeam::instance().failInit) {
            return nullptr;
        }
        ++CurlSeam::instance().handles;
    }
    InsideLibcurl const inside;
    return original<CURL*()>("curl_easy_init")();
}

void curl_easy_cleanup(CURL* handle)
{
    if (depth == 0) {
        std::lock_guard const lock(seamMutex());
        --CurlSeam::instance().handles;
    }
    InsideLibcurl const inside;
    original<void(CURL*)>("curl_easy_cleanup")(handle);
}

CURLcode curl_easy_setopt(CURL* handle, CURLoption id, ...)
{
    auto* const setOption = original<CURLcode(CURL*, CURLoption, ...)>("curl_easy_setopt");
    curl_easyoption const* const known = curl_easy_option_by_id(id);
    std::lock_guard const lock(seamMutex());
    CurlSeam& seam = CurlSeam::instance();
    CurlSeam::Option option = {id, QString::fromLatin1(known->name), nullptr};
    CURLcode code = CURLE_OK;
    bool const fails = seam.failOption == id;
    va_list arguments;
    va_start(arguments, id);
    switch (known->type) {
    case CURLOT_LONG:
    case CURLOT_VALUES: {
        long const value = va_arg(arguments, long);
        option.text += QStringLiteral("=%1").arg(value);
        code = fails ? CURLE_OUT_OF_MEMORY : setOption(handle, id, value);
        break;
    }
    case CURLOT_OFF_T: {
        auto const value = va_arg(arguments, curl_off_t);
        option.text += QStringLiteral("=%1").arg(value);
        code = fails ? CURLE_OUT_OF_MEMORY : setOption(handle, id, value);
        break;
    }
    case CURLOT_FUNCTION: {
        auto* const value = va_arg(arguments, void (*)());
        code = fails ? CURLE_OUT_OF_MEMORY : setOption(handle, id, value);
        break;
    }
    default: {
        option.pointer = va_arg(arguments, void*);
        if (known->type == CURLOT_STRING || id == CURLOPT_POSTFIELDS) {
            option.text += QLatin1Char('=') + QString::fromUtf8(static_cast<char const*>(option.pointer));
        } else if (known->type == CURLOT_SLIST) {
            seam.headers = linesOf(static_cast<curl_slist const*>(option.pointer));
        }
        code = fails ? CURLE_OUT_OF_MEMORY : setOption(handle, id, option.pointer);
    }
    }
    va_end(arguments);
    seam.options += option;
    return code;
}

CURLcode curl_easy_getinfo(CURL* handle, CURLINFO info, ...)
{
    va_list arguments;
    va_start(arguments, info);
    void* const target = va_arg(arguments, void*);
    va_end(arguments);
    {
        std::lock_guard const lock(seamMutex());
        CurlSeam const& seam = CurlSeam::instance();
        if (seam.result && info == CURLINFO_RESPONSE_CODE) {
            *static_cast<long*>(target) = seam.responseCode;
            return CURLE_OK;
        }
    }
    CURLcode const code = original<CURLcode(CURL*, CURLINFO, ...)>("curl_easy_getinfo")(handle, info, target);
    if (info == CURLINFO_RESPONSE_CODE) {
        std::lock_guard const lock(seamMutex());
        CurlSeam::instance().seenResponseCode = *static_cast<long*>(target);
    }
    return code;
}

CURLM* curl_multi_init()
{
    return inside<CURLM*()>("curl_multi_init");
}

CURLMcode curl_multi_cleanup(CURLM* multi)
{
    return inside<CURLMcode(CURLM*)>("curl_multi_cleanup", multi);
}

CURLMcode curl_multi_add_handle(CURLM* multi, CURL* handle)
{
    {
        std::lock_guard const lock(seamMutex());
        CurlSeam& seam = CurlSeam::instance();
        ++seam.performed;
        if (seam.onPerform) {
            seam.onPerform(seam);
        }
        answered = {CURLMSG_NONE, handle, {}};
        if (seam.result) {
            answered.msg = CURLMSG_DONE;
            answered.data.result = *seam.result;
            return CURLM_OK;
        }
        if (!seam.trusted.isEmpty()) {
            original<CURLcode(CURL*, CURLoption, ...)>("curl_easy_setopt")(handle, CURLOPT_CAINFO,
                                                                           seam.trusted.constData());
        }
    }
    return inside<CURLMcode(CURLM*, CURL*)>("curl_multi_add_handle", multi, handle);
}

CURLMcode curl_multi_remove_handle(CURLM* multi, CURL* handle)
{
    return isAnswered() ? CURLM_OK
                        : inside<CURLMcode(CURLM*, CURL*)>("curl_multi_remove_handle", multi, handle);
}

CURLMcode curl_multi_perform(CURLM* multi, int* running)
{
    if (isAnswered()) {
        *running = 0;
        return CURLM_OK;
    }
    return inside<CURLMcode(CURLM*, int*)>("curl_multi_perform", multi, running);
}

CURLMcode curl_multi_poll(CURLM* multi, curl_waitfd waits[], unsigned int count, int milliseconds, int* ready)
{
    return inside<CURLMcode(CURLM*, curl_waitfd[], unsigned int, int, int*)>("curl_multi_poll", multi, waits,
                                                                             count, milliseconds, ready);
}

CURLMsg* curl_multi_info_read(CURLM* multi, int* left)
{
    return isAnswered() ? &answered : inside<CURLMsg*(CURLM*, int*)>("curl_multi_info_read", multi, left);
}

curl_slist* curl_slist_append(curl_slist* list, char const* line)
{
    auto* const append = original<curl_slist*(curl_slist*, char const*)>("curl_slist_append");
    if (depth > 0) {
        return append(list, line);
    }
    std::lock_guard const lock(seamMutex());
    CurlSeam& seam = CurlSeam::instance();
    if (seam.failAppend && (*seam.failAppend)-- == 0) {
        return nullptr;
    }
    if (list == nullptr) {
        ++seam.lists;
    }
    return append(list, line);
}

void curl_slist_free_all(curl_slist* list)
{
    if (list != nullptr && depth == 0) {
        std::lock_guard const lock(seamMutex());
        --CurlSeam::instance().lists;
    }
    original<void(curl_slist*)>("curl_slist_free_all")(list);
}
}

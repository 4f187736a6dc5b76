// A host that loads the library while it runs, uses it in threads, and unloads it, three times over. Prints
// what went wrong.

#include <dlfcn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <thread>

#include <Varnet64.h>

namespace {

bool Fail(char const* pWhat) {
    std::printf("%s\n", pWhat);
    return false;
}

// The library's constructor and destructor of a model, under their mangled names: the program is not linked
// with the library.
using Construct = void (*)(void*);
using AddFacet = void (*)(void*, tagFACET&);

bool UseModel(void* pLibrary) {
    auto const construct = reinterpret_cast<Construct>(dlsym(pLibrary, "_ZN9CSTLModelC1Ev"));
    auto const destruct = reinterpret_cast<Construct>(dlsym(pLibrary, "_ZN9CSTLModelD1Ev"));
    auto const addFacet = reinterpret_cast<AddFacet>(dlsym(pLibrary, "_ZN9CSTLModel8AddFacetER8tagFACET"));
    if (construct == nullptr || destruct == nullptr || addFacet == nullptr) return Fail("no model");
    void* const pModel = std::malloc(sizeof(CSTLModel));
    construct(pModel);
    for (int i = 0; i < 20000; ++i) {
        tagFACET facet;
        double const x = i;
        facet.m_ptVertex[0].x = x;
        facet.m_ptVertex[1].x = x + 1.0;
        facet.m_ptVertex[2].y = x + 1.0;
        addFacet(pModel, facet);
    }
    destruct(pModel);
    std::free(pModel);
    return true;
}

bool UseOnce(char const* pPath) {
    void* const pLibrary = dlopen(pPath, RTLD_NOW | RTLD_LOCAL);
    if (pLibrary == nullptr) return Fail(dlerror());
    auto const answer = reinterpret_cast<int (*)()>(dlsym(pLibrary, "_Z8fnVarnetv"));
    bool bGood = answer != nullptr && answer() == 42;
    std::thread thread([&] { bGood = UseModel(pLibrary) && bGood; });
    thread.join();
    bGood = UseModel(pLibrary) && bGood;
    // A child has the library and its pages, too, and unloads it by itself.
    pid_t const child = fork();
    if (child == 0) _exit(UseModel(pLibrary) && dlclose(pLibrary) == 0 ? 0 : 1);
    int nStatus = -1;
    if (waitpid(child, &nStatus, 0) != child || nStatus != 0) return Fail("a child process cannot use it");
    if (dlclose(pLibrary) != 0) return Fail(dlerror());
    return bGood || Fail("not the library");
}

// Pages of memory that the process has; 0 where the system does not tell.
long PagesOfMemory() {
    FILE* const pFile = std::fopen("/proc/self/statm", "r");
    if (pFile == nullptr) return 0;
    long nPages = 0;
    bool const bRead = std::fscanf(pFile, "%ld", &nPages) == 1;
    std::fclose(pFile);
    return bRead ? nPages : 0;
}

bool IsHandledByDefault(int nSignal) {
    struct sigaction action {};
    return sigaction(nSignal, nullptr, &action) == 0 && action.sa_handler == SIG_DFL;
}

}  // namespace

int main(int nArguments, char** ppArguments) {
    if (nArguments != 2) return 2;
    long nBefore = 0;
    for (int i = 0; i < 3; ++i) {
        nBefore = PagesOfMemory();
        if (!UseOnce(ppArguments[1])) return 1;
    }
    // After the first times, the next one leaves no memory behind: a large page would be 512 of these.
    if (PagesOfMemory() - nBefore >= 512) return Fail("pages are kept when it is unloaded") ? 0 : 1;
    for (int const nSignal : {SIGINT, SIGTERM, SIGSEGV, SIGFPE, SIGABRT, SIGPIPE}) {
        if (!IsHandledByDefault(nSignal)) return Fail("a signal is handled") ? 0 : 1;
    }
    return 0;
}

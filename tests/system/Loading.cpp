// A host that loads the library while it runs, uses it in threads, and unloads it, three times over. Prints
// what went wrong.

#include <dlfcn.h>

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
    if (dlclose(pLibrary) != 0) return Fail(dlerror());
    return bGood || Fail("not the library");
}

bool IsHandledByDefault(int nSignal) {
    struct sigaction action {};
    return sigaction(nSignal, nullptr, &action) == 0 && action.sa_handler == SIG_DFL;
}

}  // namespace

int main(int nArguments, char** ppArguments) {
    if (nArguments != 2) return 2;
    for (int i = 0; i < 3; ++i) {
        if (!UseOnce(ppArguments[1])) return 1;
    }
    for (int const nSignal : {SIGINT, SIGTERM, SIGSEGV, SIGFPE, SIGABRT, SIGPIPE}) {
        if (!IsHandledByDefault(nSignal)) return Fail("a signal is handled") ? 0 : 1;
    }
    return 0;
}

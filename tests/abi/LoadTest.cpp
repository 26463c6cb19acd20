// This program is not linked against any library of ours: they come and go with the plug-in.
#include <dlfcn.h>
#include <gtest/gtest.h>

#include <fstream>
#include <string>

namespace {

bool isMapped(const std::string& file)
{
    std::ifstream maps("/proc/self/maps");
    for (std::string line; std::getline(maps, line);) {
        if (line.find(file) != std::string::npos) {
            return true;
        }
    }
    return false;
}

void* loadPlugin()
{
    return dlopen(VOLUX_PLUGIN, RTLD_NOW | RTLD_LOCAL);
}

double call(void* module, const char* function)
{
    return reinterpret_cast<double (*)()>(dlsym(module, function))();
}

TEST(Loading, AnInitialiserOfAnotherModuleMaySampleAlready)
{
    void* module = loadPlugin();
    ASSERT_NE(module, nullptr) << dlerror();
    EXPECT_EQ(call(module, "voluxPluginSampledAtLoad"), 2.0);
    dlclose(module);
}

TEST(Loading, TheLibraryIsLoadedWithThePlugin)
{
    void* module = loadPlugin();
    ASSERT_NE(module, nullptr) << dlerror();
    EXPECT_TRUE(isMapped(VOLUX_LIBRARY));
    dlclose(module);
}

TEST(Loading, TheLibraryIsGoneAfterUseAndLoadsAgain)
{
    for (int round = 0; round < 100; ++round) {
        void* module = loadPlugin();
        ASSERT_NE(module, nullptr) << dlerror();
        ASSERT_EQ(call(module, "voluxPluginSample"), 4.0 + 4.0 + 4.0);
        ASSERT_EQ(dlclose(module), 0);
        ASSERT_FALSE(isMapped(VOLUX_LIBRARY)) << "round " << round;
    }
}

}  // namespace

#include "JvmEnvironment.h"

#include <gtest/gtest.h>

#include <string>

namespace {

JavaVM* gVm = nullptr;
JNIEnv* gEnv = nullptr;

class JvmEnvironment : public testing::Environment {
 public:
  void SetUp() override {
    std::string classPath = std::string("-Djava.class.path=") + OV_TEST_CLASS_PATH;
    std::string libraryPath = std::string("-Djava.library.path=") + OV_TEST_LIBRARY_DIR;
    JavaVMOption options[3];
    options[0].optionString = const_cast<char*>(classPath.c_str());
    options[1].optionString = const_cast<char*>(libraryPath.c_str());
    options[2].optionString = const_cast<char*>("-Xcheck:jni");
    JavaVMInitArgs args;
    args.version = JNI_VERSION_1_8;
    args.nOptions = 3;
    args.options = options;
    args.ignoreUnrecognized = JNI_FALSE;
    ASSERT_EQ(JNI_OK, JNI_CreateJavaVM(&gVm, reinterpret_cast<void**>(&gEnv), &args));
  }
  // The JVM cannot be created again in this process, so it is left to exit.
};

testing::Environment* const gJvm = testing::AddGlobalTestEnvironment(new JvmEnvironment);

}  // namespace

JNIEnv* testJniEnv() { return gEnv; }

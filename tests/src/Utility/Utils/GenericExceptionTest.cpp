#include "Utility/Utils/GenericException.h"

#include <type_traits>

#include <boost/thread/exceptions.hpp>
#include <gtest/gtest.h>

#include "Common/DBUSWrapper/DBUSWrapperExceptions.h"
#include "CoreInterface/CoreExceptions.h"
#include "DAXCommon/UserInterestExceptions.h"
#include "Platform/Product/SystemInfoAPIInternalProblemException.h"
#include "Platform/SystemAPI/USBSystemAPI/USBAPIException.h"
#include "Platform/SystemAPI/VconfSystemAPI/VConfException.h"
#include "Utility/Utils/RethrowExceptionStream.h"

using DAX::Common::Utils::GenericException;

namespace {

template <class Root>
class FamilyTest : public testing::Test {};

using Roots = testing::Types<DAX::Common::DBUSWrapper::DBUSWrapperExceptions::DBUSWrapperException,
                             DAX::UserInterestExceptions::UserInterestException,
                             DAX::Core::CoreExceptions::CoreException, DAX::Platform::VConfException,
                             DAX::Platform::SystemInfoAPIInternalProblemException, DAX::Platform::USBAPIException>;
TYPED_TEST_SUITE(FamilyTest, Roots, );

TYPED_TEST(FamilyTest, StandsBesideGenericExceptionOnCommonGround) {
    EXPECT_FALSE((std::is_base_of<GenericException, TypeParam>::value));
    EXPECT_TRUE((std::is_convertible<TypeParam*, std::exception*>::value));
    EXPECT_TRUE((std::is_convertible<TypeParam*, boost::exception*>::value));
}

TYPED_TEST(FamilyTest, SharesItsBasesWithAnExceptionThatIsMixedIn) {
    class Mixed : public GenericException, public TypeParam {};

    EXPECT_TRUE((std::is_convertible<Mixed*, std::exception*>::value)) << "the bases are virtual";
    EXPECT_TRUE((std::is_convertible<Mixed*, boost::exception*>::value));
}

TEST(ThreadInterruptedTest, SharesItsBasesWithAnExceptionThatIsMixedIn) {
    class Mixed : public DAX::Common::Utils::thread_interrupted,
                  public GenericException,
                  public virtual boost::thread_interrupted {};

    EXPECT_TRUE((std::is_convertible<Mixed*, std::exception*>::value));
    EXPECT_TRUE((std::is_convertible<Mixed*, boost::exception*>::value));
    EXPECT_TRUE((std::is_convertible<Mixed*, boost::thread_interrupted*>::value));
}

TEST(ThreadInterruptedTest, IsCaughtByAHandlerOfTheBoostType) {
    EXPECT_THROW(throw DAX::Common::Utils::thread_interrupted(), boost::thread_interrupted);
}

} // namespace

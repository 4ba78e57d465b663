#include "TextTableOfAnotherFile.h"
#include <corvane/Foundation.h>
#include <cstdint>
#include <gtest/gtest.h>
#include <iterator>
#include <type_traits>

namespace Corvane::Test
{

namespace
{

Exception make(std::uint32_t code)
{
    return Exception(static_cast<ReturnCode>(code));
}

const std::string TEXT_DURING_STATIC_INITIALISATION = make(5).what();
const std::string ENTRY_DURING_STATIC_INITIALISATION = RETURN_CODE_TEXTS[5];

} // namespace

TEST(ExceptionTest, NamesTheFirstSixCodes)
{
    EXPECT_STREQ(make(0).what(), "Success");
    EXPECT_STREQ(make(1).what(), "Invalid parameter");
    EXPECT_STREQ(make(2).what(), "Invalid state");
    EXPECT_STREQ(make(3).what(), "Out of memory");
    EXPECT_STREQ(make(4).what(), "Not supported");
    EXPECT_STREQ(make(5).what(), "Timed out");
}

TEST(ExceptionTest, CallsEveryOtherCodeAGenericFailure)
{
    for (const std::uint32_t code : {6U, 7U, 8U, 0x7FFFFFFFU, 0x80000000U, 0xFFFFFFFFU})
        EXPECT_STREQ(make(code).what(), "Generic failure") << code;
    EXPECT_STREQ(Exception(RETURN_REFUSED_BY_SYSTEM).what(), "Generic failure");
}

TEST(ExceptionTest, KeepsItsCode)
{
    EXPECT_EQ(make(0).getCode(), RETURN_SUCCESS);
    EXPECT_EQ(Exception(RETURN_REFUSED_BY_SYSTEM).getCode(), 7U);
    EXPECT_EQ(make(0xFFFFFFFF).getCode(), 0xFFFFFFFF);
}

TEST(ExceptionTest, CopiesItsCode)
{
    const Exception original = make(4);
    const Exception copy(original);

    EXPECT_EQ(copy.getCode(), original.getCode());
    EXPECT_STREQ(copy.what(), "Not supported");
}

TEST(ExceptionTest, IsThrownByValueAndCaughtByItsOwnTypeOnly)
{
    static_assert(!std::is_base_of_v<std::exception, Exception>);
    static_assert(!std::is_copy_assignable_v<Exception>);
    static_assert(sizeof(ReturnCode) == 4);
    try {
        throw Exception(RETURN_TIMED_OUT);
    } catch (const std::exception&) {
        FAIL() << "caught as std::exception";
    } catch (const Exception& exception) {
        EXPECT_EQ(exception.getCode(), RETURN_TIMED_OUT);
    }
}

TEST(ExceptionTest, CanBeExtended)
{
    class Extended : public Exception
    {
    public:
        Extended() : Exception(RETURN_INVALID_STATE) {}
        ReturnCode getCode() const override { return RETURN_OUT_OF_MEMORY; }
        const char* what() const override { return "extended"; }
    };
    const Extended extended;
    const Exception& exception = extended;

    EXPECT_EQ(exception.getCode(), RETURN_OUT_OF_MEMORY);
    EXPECT_STREQ(exception.what(), "extended");
}

TEST(TextTable, HasSevenTextsInTheOrderOfTheCodes)
{
    ASSERT_EQ(std::size(RETURN_CODE_TEXTS), 7U);
    for (std::uint32_t code = 0; code < 7; ++code)
        EXPECT_EQ(RETURN_CODE_TEXTS[code], make(code).what());
}

TEST(TextTable, ExistsOncePerSourceFileWithEqualTexts)
{
    const std::string* const other = textTableOfAnotherFile();

    ASSERT_NE(other, RETURN_CODE_TEXTS);
    for (std::size_t i = 0; i < std::size(RETURN_CODE_TEXTS); ++i)
        EXPECT_EQ(RETURN_CODE_TEXTS[i], other[i]);
}

TEST(TextTable, IsBuiltBeforeTheOtherStaticObjectsOfItsFile)
{
    EXPECT_EQ(ENTRY_DURING_STATIC_INITIALISATION, "Timed out");
    EXPECT_EQ(TEXT_DURING_STATIC_INITIALISATION, "Timed out");
}

} // namespace Corvane::Test

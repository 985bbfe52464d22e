// The library's reader of the compiler's tables, on tables written by hand.
#include "runtime/HandlerTable.h"

#include <gtest/gtest.h>

#include <cstring>
#include <initializer_list>
#include <typeinfo>
#include <vector>

namespace
{
constexpr unsigned char kNone = 0xff;
constexpr ULONG_PTR kFunction = 0x1000;

struct Base
{
    virtual ~Base() = default;
};
struct Derived : Base
{
};

// An exception as the compiler's run-time code lays it out, with a pointer thrown.
struct Thrown
{
    explicit Thrown(const std::type_info& type) : pType(&type)
    {
        exception.exception_class = 0x474E5543432B2B00;
    }
    const std::type_info* pType;
    void* header[8] = {};
    void* pCaught = nullptr;
    _Unwind_Exception exception = {};
    void* pObject = this;
};

// A table with types as Clang writes them: pointers of 8 bytes.
class Table
{
public:
    Table(std::initializer_list<unsigned char> callSites,
          std::initializer_list<unsigned char> actions,
          std::initializer_list<const std::type_info*> types)
    {
        const std::size_t cbTypes = types.size() * sizeof(void*);
        m_bytes = {kNone, static_cast<unsigned char>(types.size() == 0 ? kNone : 0)};
        if (types.size() != 0)
            m_bytes.push_back(
                static_cast<unsigned char>(2 + callSites.size() + actions.size() + cbTypes));
        m_bytes.push_back(1);
        m_bytes.push_back(static_cast<unsigned char>(callSites.size()));
        m_bytes.insert(m_bytes.end(), callSites);
        m_bytes.insert(m_bytes.end(), actions);
        // The first type is the last in the table.
        for (std::size_t i = types.size(); i > 0; --i)
        {
            const auto* const pBytes =
                reinterpret_cast<const unsigned char*>(&types.begin()[i - 1]);
            m_bytes.insert(m_bytes.end(), pBytes, pBytes + sizeof(void*));
        }
    }

    // What there is to do where a call that is nCall bytes into the function throws.
    Handling At(ULONG_PTR nCall, Thrown& thrown)
    {
        RUNTIME_FUNCTION function = {};
        DISPATCHER_CONTEXT dispatch = {};
        dispatch.ImageBase = kFunction;
        dispatch.FunctionEntry = &function;
        dispatch.ControlPc = kFunction + nCall + 1; // behind the call
        dispatch.HandlerData = m_bytes.data();
        return FindHandling(dispatch, &thrown.exception);
    }

private:
    std::vector<unsigned char> m_bytes;
};

using Kind = Handling::Kind;

TEST(HandlerTable, HasNothingForACallWithoutALandingPad)
{
    Thrown thrown(typeid(Base*));
    Table table({10, 5, 0, 0}, {}, {});
    EXPECT_EQ(table.At(10, thrown).kind, Kind::Nothing);
    EXPECT_EQ(table.At(14, thrown).kind, Kind::Nothing);
}

TEST(HandlerTable, EndsTheProgramForACallThatItDoesNotHave)
{
    Thrown thrown(typeid(Base*));
    Table table({10, 5, 0, 0, 20, 5, 0, 0}, {}, {});
    EXPECT_EQ(table.At(9, thrown).kind, Kind::Terminate);
    EXPECT_EQ(table.At(15, thrown).kind, Kind::Terminate);
    EXPECT_EQ(table.At(25, thrown).kind, Kind::Terminate);
    EXPECT_EQ(Table({}, {}, {}).At(0, thrown).kind, Kind::Terminate);
}

TEST(HandlerTable, CleansUpWithoutAnAction)
{
    Thrown thrown(typeid(Base*));
    // Two bytes for 0x85.
    Table table({0, 10, 40, 0, 10, 10, 0x85, 0x01, 0}, {}, {});
    EXPECT_EQ(table.At(5, thrown).kind, Kind::CleanUp);
    EXPECT_EQ(table.At(5, thrown).nLandingPad, kFunction + 40);
    EXPECT_EQ(table.At(10, thrown).nLandingPad, kFunction + 0x85);
}

TEST(HandlerTable, CatchesByTypeByBaseAndByAnything)
{
    Thrown derived(typeid(Derived*));
    Thrown base(typeid(Base*));
    Thrown other(typeid(int*));
    // Derived*, else Base*, else anything.
    Table table({0, 10, 40, 1}, {1, 1, 2, 1, 3, 0}, {&typeid(Derived*), &typeid(Base*), nullptr});
    EXPECT_EQ(table.At(0, derived).kind, Kind::Catch);
    EXPECT_EQ(table.At(0, derived).nSelector, 1U);
    EXPECT_EQ(table.At(0, base).nSelector, 2U);
    EXPECT_EQ(table.At(0, other).nSelector, 3U);
    EXPECT_EQ(table.At(0, base).pObject, base.pObject);

    Table onlyBase({0, 10, 40, 1}, {1, 0}, {&typeid(Base*)});
    Derived object;
    derived.pObject = &object;
    EXPECT_EQ(onlyBase.At(0, derived).kind, Kind::Catch);
    EXPECT_EQ(onlyBase.At(0, derived).pObject, static_cast<Base*>(&object));
    EXPECT_EQ(onlyBase.At(0, other).kind, Kind::Nothing);
}

TEST(HandlerTable, CleansUpBehindACatchThatDoesNotFit)
{
    Thrown other(typeid(int*));
    Table table({0, 10, 40, 1}, {1, 1, 0, 0}, {&typeid(Base*)});
    EXPECT_EQ(table.At(0, other).kind, Kind::CleanUp);
    EXPECT_EQ(table.At(0, other).nSelector, 0U);
}

TEST(HandlerTable, FollowsActionsBackwards)
{
    Thrown other(typeid(int*));
    // Begins with the second action, which leads to the first: offset -3.
    Table table({0, 10, 40, 3}, {2, 0, 1, 0x7d}, {&typeid(Base*), nullptr});
    EXPECT_EQ(table.At(0, other).kind, Kind::Catch);
    EXPECT_EQ(table.At(0, other).nSelector, 2U);
}

TEST(HandlerTable, ReadsNumbersOfTwoBytes)
{
    Thrown other(typeid(int*));
    // Five bytes on, to the last action; and five back, to the first.
    Table onwards({0, 10, 40, 1}, {1, 0x85, 0x00, 0, 0, 0, 2, 0}, {&typeid(Base*), nullptr});
    EXPECT_EQ(onwards.At(0, other).kind, Kind::Catch);
    EXPECT_EQ(onwards.At(0, other).nSelector, 2U);
    Table back({0, 10, 40, 5}, {2, 0, 0, 0, 1, 0xfb, 0x7f}, {&typeid(Base*), nullptr});
    EXPECT_EQ(back.At(0, other).kind, Kind::Catch);
    EXPECT_EQ(back.At(0, other).nSelector, 2U);
}

TEST(HandlerTable, CatchesAnotherLanguagesExceptionByAnythingOnly)
{
    Thrown foreign(typeid(Base*));
    foreign.exception.exception_class = 0x4D4F5A0052555354;
    Table byType({0, 10, 40, 1}, {1, 0}, {&typeid(Base*)});
    EXPECT_EQ(byType.At(0, foreign).kind, Kind::Nothing);
    Table byAnything({0, 10, 40, 1}, {1, 0}, {nullptr});
    EXPECT_EQ(byAnything.At(0, foreign).kind, Kind::Catch);
    SetCaughtObject(&foreign.exception, &foreign);
    EXPECT_EQ(foreign.pCaught, nullptr) << "it has no header of ours";
}

TEST(HandlerTable, TellsTheCatchItsObject)
{
    Thrown thrown(typeid(Base*));
    SetCaughtObject(&thrown.exception, &thrown);
    EXPECT_EQ(thrown.pCaught, &thrown);
}
} // namespace

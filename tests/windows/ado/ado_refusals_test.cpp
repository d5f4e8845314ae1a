// What the stand-in for ADO refuses, and how. It is worth only that: a caller that the stand-in puts up with
// must be one that ADO puts up with. Everything is tried on objects that are open, unless being closed is
// what is tried; a closed one would refuse all of it.
#include <gtest/gtest.h>
#include <windows.h>
// windows.h stands first: the automation headers need it.
#include <oleauto.h>

#include <array>
#include <optional>
#include <string>
#include <vector>

#include "base/runtime_error.h"
#include "platform/windows/dispatch.h"
#include "windows/ado/ado_library.h"

namespace {

using platform::windows::Argument;
using platform::windows::Dispatch;
using platform::windows::Missing;

// ADO's own numbers.
constexpr int wrongArguments = 3001;
constexpr int noCurrentRecord = 3021;
constexpr int inTransaction = 3246;
constexpr int itemNotFound = 3265;
constexpr int objectClosed = 3704;
constexpr int objectOpen = 3705;
constexpr int providerNotFound = 3706;
constexpr int connectionClosed = 3709;
constexpr int noTransaction = static_cast<int>(0x8004D00E);

template <class Work>
std::optional<base::RuntimeError> errorOf(const Work& work) {
    try {
        work();
    } catch (const base::RuntimeError& error) {
        return error;
    }
    return std::nullopt;
}

/// The number of the error that the work raises; 0 when it is put up with.
template <class Work>
int numberOf(const Work& work) {
    const auto error = errorOf(work);
    return error ? error->number() : 0;
}

class AdoRefusals : public testing::Test {
  protected:
    void SetUp() override {
        if (!ado_tests::isStandInRegistered()) {
            GTEST_SKIP() << "the refusals are the stand-in's";
        }
        library_.emplace();
        connection_.emplace(Dispatch::create("ADODB.Connection"));
        connection_->put("Provider", "Microsoft.Jet.OLEDB.4.0");
        property("Data Source").put("Value", library_->path());
        connection_->call("Open");
        run("INSERT INTO root_word ( word ) VALUES( 'a')");
        rows_.emplace(opened("SELECT id, word FROM root_word"));
    }

    Dispatch property(const char* name) const {
        const base::Variant key(name);
        const Argument argument = &key;
        return connection_->getObject("Properties").getObject("Item", {&argument, 1});
    }

    void run(const char* statement) const {
        const base::Variant text(statement);
        const Argument argument = &text;
        connection_->call("Execute", {&argument, 1});
    }

    Dispatch opened(const char* statement) const {
        Dispatch recordset = Dispatch::create("ADODB.Recordset");
        const base::Variant text(statement);
        const std::array<Argument, 2> arguments = {&text, &*connection_};
        recordset.call("Open", arguments);
        return recordset;
    }

    Dispatch field(const char* name) const {
        const base::Variant key(name);
        const Argument argument = &key;
        return rows_->getObject("Fields").getObject("Item", {&argument, 1});
    }

    int calling(const char* method, const std::vector<Argument>& arguments = {}) const {
        return numberOf([&] { connection_->call(method, arguments); });
    }
    int opening(const std::vector<Argument>& arguments) const {
        return numberOf([&] { Dispatch::create("ADODB.Recordset").call("Open", arguments); });
    }

    std::optional<ado_tests::StandInLibrary> library_;
    mutable std::optional<Dispatch> connection_;  // open
    mutable std::optional<Dispatch> rows_;        // open, on a row
};

TEST_F(AdoRefusals, StandOnCallsThatAreRight) {
    EXPECT_EQ(calling("BeginTrans"), 0);
    EXPECT_EQ(calling("CommitTrans"), 0);
    EXPECT_EQ(rows_->get("EOF"), base::Variant(false));
    EXPECT_EQ(field("word").get("Value"), base::Variant("a"));
    rows_->call("MoveNext");
    EXPECT_EQ(rows_->get("EOF"), base::Variant(true));
}

TEST_F(AdoRefusals, OfAMethodThatIsReadAsAProperty) {
    EXPECT_EQ(numberOf([this] { connection_->get("BeginTrans"); }), DISP_E_MEMBERNOTFOUND);
    EXPECT_EQ(numberOf([this] { connection_->get("Close"); }), DISP_E_MEMBERNOTFOUND);
    EXPECT_EQ(numberOf([this] { rows_->get("MoveNext"); }), DISP_E_MEMBERNOTFOUND);
    EXPECT_EQ(numberOf([this] { rows_->get("Close"); }), DISP_E_MEMBERNOTFOUND);
}

TEST_F(AdoRefusals, OfAPropertyThatIsCalledAsAMethod) {
    EXPECT_EQ(calling("Provider"), DISP_E_MEMBERNOTFOUND);
    EXPECT_EQ(calling("State"), DISP_E_MEMBERNOTFOUND);
    EXPECT_EQ(numberOf([this] { connection_->callForObject("Properties"); }), DISP_E_MEMBERNOTFOUND);
    EXPECT_EQ(numberOf([this] { rows_->call("EOF"); }), DISP_E_MEMBERNOTFOUND);
    EXPECT_EQ(numberOf([this] { rows_->callForObject("Fields"); }), DISP_E_MEMBERNOTFOUND);
    EXPECT_EQ(numberOf([this] { field("word").call("Value"); }), DISP_E_MEMBERNOTFOUND);
}

TEST_F(AdoRefusals, OfAPropertyThatIsNotToBeSet) {
    EXPECT_EQ(numberOf([this] { rows_->put("EOF", true); }), DISP_E_MEMBERNOTFOUND);
    EXPECT_EQ(numberOf([this] { connection_->put("State", std::int32_t{0}); }), DISP_E_MEMBERNOTFOUND);
}

TEST_F(AdoRefusals, OfAnArgumentOfANeighbouringType) {
    const base::Variant text("SELECT id FROM root_word");
    const base::Variant shortNumber(std::int16_t{-1});
    const base::Variant number(std::int32_t{3});
    EXPECT_EQ(calling("Execute", {&number}), DISP_E_TYPEMISMATCH);
    EXPECT_EQ(calling("Execute", {&text, Missing{}, &shortNumber}), DISP_E_TYPEMISMATCH);
    EXPECT_EQ(opening({&text, &text}), DISP_E_TYPEMISMATCH);
    EXPECT_EQ(opening({&text, &*connection_, &shortNumber}), DISP_E_TYPEMISMATCH);
    EXPECT_EQ(opening({&text, &*connection_, &number, &shortNumber}), DISP_E_TYPEMISMATCH);
    EXPECT_EQ(opening({&text, &*connection_, &number, &number, &shortNumber}), DISP_E_TYPEMISMATCH);
    Dispatch closed = Dispatch::create("ADODB.Connection");
    EXPECT_EQ(numberOf([&] { closed.put("Provider", number); }), DISP_E_TYPEMISMATCH);
    EXPECT_EQ(numberOf([this] { property("Data Source").put("Value", base::Null{}); }), DISP_E_TYPEMISMATCH);
}

TEST_F(AdoRefusals, OfArgumentsTooManyOrTooFew) {
    const base::Variant text("SELECT id FROM root_word");
    const base::Variant options(std::int32_t{-1});
    EXPECT_EQ(calling("Execute", {&text, Missing{}, &options, &options}), DISP_E_BADPARAMCOUNT);
    EXPECT_EQ(calling("BeginTrans", {&options}), DISP_E_BADPARAMCOUNT);
    EXPECT_EQ(calling("Execute"), DISP_E_BADPARAMCOUNT);
    EXPECT_EQ(calling("Execute", {Missing{}, Missing{}, &options}), DISP_E_PARAMNOTOPTIONAL);
    EXPECT_EQ(opening({&text}), DISP_E_BADPARAMCOUNT);
    EXPECT_EQ(opening({&text, &*connection_, &options, &options, &options, &options}), DISP_E_BADPARAMCOUNT);
}

TEST_F(AdoRefusals, OfAPutWhoseValueIsNotNamed) {
    const Dispatch closed = Dispatch::create("ADODB.Connection");
    std::wstring name = L"Provider";
    wchar_t* names = name.data();
    DISPID member = DISPID_UNKNOWN;
    ASSERT_EQ(closed.object()->GetIDsOfNames(IID_NULL, &names, 1, 0, &member), S_OK);
    VARIANT value;
    V_VT(&value) = VT_BSTR;
    V_BSTR(&value) = ::SysAllocString(L"Microsoft.Jet.OLEDB.4.0");
    const auto put = [&](DISPID* named) {
        DISPPARAMS parameters{&value, named, 1, named == nullptr ? 0U : 1U};
        return closed.object()->Invoke(member, IID_NULL, 0, DISPATCH_PROPERTYPUT, &parameters, nullptr,
                                       nullptr, nullptr);
    };
    DISPID other = 0;
    DISPID valuePut = DISPID_PROPERTYPUT;
    EXPECT_EQ(put(nullptr), DISP_E_NONAMEDARGS);
    EXPECT_EQ(put(&other), DISP_E_PARAMNOTFOUND);
    EXPECT_EQ(put(&valuePut), S_OK);
    ::VariantClear(&value);
}

TEST_F(AdoRefusals, OfAConnectionHaveAdosNumbers) {
    const base::Variant text("x");
    EXPECT_EQ(calling("Open"), objectOpen);
    EXPECT_EQ(numberOf([this] { connection_->put("Provider", "Microsoft.Jet.OLEDB.4.0"); }), objectOpen);
    EXPECT_EQ(numberOf([this] { property("Data Source").put("Value", "x"); }), objectOpen);
    EXPECT_EQ(numberOf([this] { property("Data Sauce"); }), itemNotFound);
    EXPECT_EQ(calling("CommitTrans"), noTransaction);
    EXPECT_EQ(calling("RollbackTrans"), noTransaction);
    EXPECT_EQ(calling("BeginTrans"), 0);
    EXPECT_EQ(calling("Close"), inTransaction);
    EXPECT_EQ(calling("RollbackTrans"), 0);
    EXPECT_EQ(calling("Close"), 0);
    EXPECT_EQ(calling("Close"), objectClosed);
    EXPECT_EQ(calling("BeginTrans"), objectClosed);
    EXPECT_EQ(calling("Execute", {&text}), objectClosed);
    EXPECT_EQ(numberOf([this] { rows_->get("EOF"); }), objectClosed);
}

TEST_F(AdoRefusals, OfAConnectionThatIsToBeOpenedHaveAdosNumbers) {
    Dispatch closed = Dispatch::create("ADODB.Connection");
    const base::Variant text("x");
    const Argument connectionString = &text;
    EXPECT_EQ(numberOf([&] { closed.call("Open"); }), providerNotFound);
    EXPECT_EQ(numberOf([&] { closed.put("Provider", "SQLOLEDB"); }), providerNotFound);
    EXPECT_EQ(numberOf([&] { closed.put("Provider", "Microsoft.Jet.OLEDB.4.0"); }), 0);
    EXPECT_EQ(numberOf([&] { closed.call("Open", {&connectionString, 1}); }), wrongArguments);
}

TEST_F(AdoRefusals, OfARecordsetHaveAdosNumbers) {
    const base::Variant text("SELECT id FROM root_word");
    const base::Variant four(std::int32_t{4});
    const base::Variant zero(std::int32_t{0});
    const std::array<Argument, 2> again = {&text, &*connection_};
    EXPECT_EQ(numberOf([&] { rows_->call("Open", again); }), objectOpen);
    EXPECT_EQ(opening({&text, &*connection_, &four}), wrongArguments);
    EXPECT_EQ(opening({&text, &*connection_, &zero, &zero}), wrongArguments);
    EXPECT_EQ(opening({&text, &*connection_, &zero, &four, &zero}), wrongArguments);
    EXPECT_EQ(opening({&text, &*rows_}), wrongArguments);
    const Dispatch closed = Dispatch::create("ADODB.Connection");
    EXPECT_EQ(opening({&text, &closed}), connectionClosed);
    EXPECT_EQ(numberOf([this] { field("colour"); }), itemNotFound);
    Dispatch word = field("word");
    rows_->call("MoveNext");
    EXPECT_EQ(numberOf([&] { word.get("Value"); }), noCurrentRecord);
    EXPECT_EQ(numberOf([this] { rows_->call("MoveNext"); }), noCurrentRecord);
    rows_->call("Close");
    EXPECT_EQ(numberOf([this] { rows_->get("EOF"); }), objectClosed);
    EXPECT_EQ(numberOf([this] { rows_->call("Close"); }), objectClosed);
}

TEST_F(AdoRefusals, HaveAdosTexts) {
    EXPECT_EQ(errorOf([this] { connection_->call("Open"); })->description(),
              "Operation is not allowed when the object is open.");
    EXPECT_EQ(errorOf([this] { connection_->call("CommitTrans"); })->description(),
              "No transaction is active.");
}

}  // namespace

// tysPRV keeps the relevance records of shares: a value per user and document that decays with a half-life in
// days. Decay is computed whenever a value is read and never written back. Whoever needs one makes it and
// hands it the database. Nothing is trapped here: a failing statement raises its error to the caller.
#pragma once

#include <cstdint>
#include <string_view>

#include "base/date_time.h"
#include "base/variant.h"
#include "infra/tysDataBase.h"

namespace relevance {

class tysPRV {
  public:
    /// Must be called before any other operation.
    void setDataSource(infra::tysDataBase& dataSource);

    /// The present relevance value of the user's share: a double once it has decayed, a 32-bit number while
    /// it has not, 0 for a share that does not exist. `dLastMod` is accepted for the callers' sake and not
    /// used.
    base::Variant decayPRV(std::int32_t iDocID, std::int32_t iUserID, const base::Variant& dLastMod,
                           bool bCountAnnotationPoints);

    /// The same.
    base::Variant getPRV(std::int32_t iDocID, std::int32_t iUserID, const base::Variant& dLastMod,
                         bool bCountAnnotationPoints);

    /// The relevance of a search term at a moment: every use before it is worth 10 when it happens and decays
    /// from then.
    double getSearchPRV(std::int32_t iSearchID, base::DateTime dDecayTo);

    /// Adds to the present value, stores the sum as the new base of the decay and records the change. Does
    /// nothing for a share that does not exist. `sComment` must not hold a single quote.
    void changePRV(std::int32_t iDocID, std::int32_t iUserID, const base::Variant& iValue,
                   std::string_view sComment);

    /// Appends a row to the record's history. `sDescription` must not hold a single quote.
    void addPRVHistoryEvent(std::int32_t iPRVid, std::string_view sDescription,
                            const base::Variant& iPRVvalue);

    /// Makes a relevance record with the data type's creation value and gives its key.
    /// Raises when there are neither rules of the data type nor default ones.
    std::int32_t createPRV(std::string_view sDataType);

    /// A known value decayed from one date to another with the document's half-life.
    base::Variant decayPRVFromDate(std::int32_t iDocID, const base::Variant& iLastKnownPRV,
                                   base::DateTime dLastKnownDate, base::DateTime dDecayTo);

  private:
    infra::tysDataBase* dataSource_ = nullptr;
};

}  // namespace relevance

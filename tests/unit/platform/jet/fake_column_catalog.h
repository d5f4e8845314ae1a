// A FakeColumnCatalog knows a few tables of a library. A test owns one.
#pragma once

#include <map>
#include <string>

#include "base/text.h"
#include "platform/jet/column_catalog.h"

namespace fakes {

class FakeColumnCatalog : public platform::jet::ColumnCatalog {
  public:
    FakeColumnCatalog() {
        using enum platform::jet::ColumnType;
        tables_["document_object"] = {{{"id", number},
                                       {"title", text},
                                       {"first_saved", date},
                                       {"time_stamp", date},
                                       {"data_size", number},
                                       {"location_invalid", boolean}},
                                      true};
        tables_["prv"] = {{{"id", number}, {"last_prv", number}, {"last_modified", date}}, true};
        tables_["prv_history"] = {{{"id_prv", number}, {"time_stamp", date}, {"prv_value", number}}, false};
        // Here the name of a date column of other tables is that of a text.
        tables_["note"] = {{{"id", number}, {"time_stamp", text}}, false};
    }

    [[nodiscard]] const platform::jet::Table* table(std::string_view name) const override {
        const auto found = tables_.find(base::fold(name));
        return found == tables_.end() ? nullptr : &found->second;
    }

  private:
    std::map<std::string, platform::jet::Table> tables_;
};

}  // namespace fakes

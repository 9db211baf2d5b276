#pragma once

#include <memory>
#include <vector>

// Common base of the questionnaire library's objects; deleted through its virtual destructor.
class CObjet {
public:
    CObjet() = default;
    CObjet(const CObjet&) = default;
    CObjet& operator=(const CObjet&) = default;
    virtual ~CObjet();
    bool operator==(const CObjet&) const = default;

    // Deletes every element and empties the array.
    template <class T> static void DeleteArray(std::vector<std::unique_ptr<T>>& array) {
        array.clear();
    }
};

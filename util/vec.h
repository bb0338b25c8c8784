// A vector whose index is checked.
#pragma once

#include <cstddef>
#include <stdexcept>
#include <vector>

namespace zvrsit {

// A std::vector whose `[]` and `at` throw std::out_of_range, the only exception that the library
// throws. It must not be deleted through a pointer to std::vector.
template <class T>
class vec : public std::vector<T> {
 public:
  using std::vector<T>::vector;

  T& operator[](std::size_t index) { return at(index); }
  const T& operator[](std::size_t index) const { return at(index); }

  T& at(std::size_t index) {
    Check(index);
    return std::vector<T>::operator[](index);
  }
  const T& at(std::size_t index) const {
    Check(index);
    return std::vector<T>::operator[](index);
  }

 private:
  void Check(std::size_t index) const {
    if (index >= this->size()) throw std::out_of_range("invalid vector<T> subscript");
  }
};

}  // namespace zvrsit

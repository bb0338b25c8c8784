// IdTable: one small value for each number, zero until set. The values lie in pieces, and a piece
// is made when something in it is first set. So memory follows the numbers that are in use, not the
// count that the header of a damaged file claims. Pieces come from blocks of many of them: for a
// large table the system is asked for large pages, not for each piece.
#pragma once

#include <algorithm>
#include <bit>
#include <cstddef>
#include <memory>
#include <span>
#include <stdexcept>
#include <type_traits>
#include <vector>

#include "platform/large_memory.h"

namespace zvrsit {

template <class Value>
class IdTable {
  static_assert(std::is_trivially_destructible_v<Value>);

 public:
  // Makes it `count` zero values.
  void Reset(std::size_t count) {
    pieces_.clear();
    blocks_.clear();
    unused_ = 0;
    count_ = 0;
    Grow(count);
  }
  // Makes it at least `count` values long.
  void Grow(std::size_t count) {
    if (count <= count_) return;
    const std::size_t wanted = (count + kPiece - 1) / kPiece;
    if (wanted > pieces_.size()) pieces_.resize(wanted);
    count_ = count;
  }
  std::size_t size() const { return count_; }

  // The value of an id; throws std::out_of_range for one that is not there.
  const Value& at(std::size_t id) const {
    Check(id);
    const Value* const piece = pieces_[id / kPiece];
    return piece == nullptr ? zero_ : piece[id % kPiece];
  }
  // The same for writing.
  Value& slot(std::size_t id) {
    Check(id);
    Value*& piece = pieces_[id / kPiece];
    if (piece == nullptr) piece = MakePiece();
    return piece[id % kPiece];
  }

  // Calls isWanted(id, value) for each id whose value differs from zero, in ascending order, until
  // one gives true; whether one did. If isWanted changes the table, it may or may not be called for
  // what it changed.
  template <class IsWanted>
  bool FindSet(IsWanted isWanted) const {
    for (std::size_t id = 0; id < count_; id += kPiece) {
      const Value* piece = pieces_[id / kPiece];
      if (piece == nullptr) continue;
      const std::size_t used = count_ - id < kPiece ? count_ - id : kPiece;
      for (std::size_t at = 0; at < used; ++at) {
        if (piece[at] != zero_ && isWanted(id + at, piece[at])) return true;
      }
    }
    return false;
  }

  // Values in a piece: those of one page of memory.
  static constexpr std::size_t kPiece = std::bit_floor(4096 / sizeof(Value));
  // Calls visit(id, values) for each piece that was made, in ascending order: the values from that
  // of `id` on, zeros after the last.
  template <class Visit>
  void ForEachPiece(Visit visit) const {
    for (std::size_t i = 0; i < pieces_.size(); ++i) {
      if (pieces_[i] != nullptr) {
        visit(i * kPiece, std::span<const Value, kPiece>(pieces_[i], kPiece));
      }
    }
  }

  // Calls change(value) for each value that differs from zero, in ascending order of the ids.
  template <class Change>
  void ForEachSet(Change change) {
    for (Value* const piece : pieces_) {
      if (piece == nullptr) continue;
      for (std::size_t at = 0; at < kPiece; ++at) {
        if (piece[at] != zero_) change(piece[at]);
      }
    }
  }

  // The first id from `id` on whose value is zero, or size().
  std::size_t FindZero(std::size_t id) const {
    for (; id < count_; id = (id / kPiece + 1) * kPiece) {
      const Value* const piece = pieces_[id / kPiece];
      if (piece == nullptr) return id;
      const std::size_t used = std::min(count_ - id / kPiece * kPiece, kPiece);
      const Value* const found = std::find(piece + id % kPiece, piece + used, zero_);
      if (found != piece + used) return id / kPiece * kPiece + (found - piece);
    }
    return count_;
  }

  // The first id from `id` on whose value may differ from zero, or size(): whole pieces that were
  // never written are skipped.
  std::size_t SkipUnmade(std::size_t id) const {
    while (id < count_ && pieces_[id / kPiece] == nullptr) id = (id / kPiece + 1) * kPiece;
    return id < count_ ? id : count_;
  }

 private:
  void Check(std::size_t id) const {
    if (id >= count_) throw std::out_of_range("invalid vector<T> subscript");
  }

  // Throws std::bad_alloc.
  Value* MakePiece() {
    constexpr std::size_t kPieceBytes = kPiece * sizeof(Value);
    if (unused_ == 0) {
      const std::size_t wanted = std::min(pieces_.size(), kMostPiecesAtOnce);
      platform::LargeBuffer block;
      if (!block.Grow(wanted * kPieceBytes)) throw std::bad_alloc();
      blocks_.push_back(std::move(block));
      unused_ = wanted;
    }
    void* const place = blocks_.back().get() + blocks_.back().length() - unused_ * kPieceBytes;
    --unused_;
    Value* const piece = static_cast<Value*>(place);
    std::uninitialized_value_construct_n(piece, kPiece);
    return piece;
  }

  static constexpr std::size_t kMostPiecesAtOnce = 512;  // 2 MB: one large page

  inline static const Value zero_{};
  std::vector<Value*> pieces_;  // null for one that was not made
  std::vector<platform::LargeBuffer> blocks_;
  std::size_t unused_ = 0;  // the pieces at the end of the last block
  std::size_t count_ = 0;
};

}  // namespace zvrsit

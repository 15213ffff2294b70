#pragma once

#include <cstdint>

namespace kovena {

// The payment statuses a merchant receives in TransactionStatus::Data::paymentStatus. Positive
// values come from the backend; -1 and -101...-107 are decided by the library itself.
namespace CheckoutStatusCode {

// Reported by the backend.
inline constexpr std::int32_t SUCCESS_1 = 1;
inline constexpr std::int32_t FAIL_2 = 2;
inline constexpr std::int32_t SUCCESS_3 = 3;
inline constexpr std::int32_t PENDING_9 = 9;
inline constexpr std::int32_t SUCCESS_11 = 11;
inline constexpr std::int32_t PENDING_14 = 14;

// Decided by the library.
inline constexpr std::int32_t CANCELLED = -1;
inline constexpr std::int32_t AMOUNT_NIL = -101;
inline constexpr std::int32_t AMOUNT_EMPTY = -102;
inline constexpr std::int32_t AMOUNT_INVALID = -103;
inline constexpr std::int32_t AMOUNT_RANGE_INVALID = -104;
inline constexpr std::int32_t ORDER_ID_NIL = -105; // also a missing access token
inline constexpr std::int32_t ORDER_ID_EMPTY = -106; // also a missing collector id
inline constexpr std::int32_t CUSTOMER_DETAIL_MISSING = -107;

// The statuses whose text is "Success": bits of this mask, for statuses below 12.
inline constexpr std::uint32_t SUCCESS_MASK = 0x80A;

} // namespace CheckoutStatusCode
} // namespace kovena

#pragma once
// The net price per unit of an e-invoice line: the line's net divided by its quantity, with as
// few decimals (2 to 6) as keep quantity × price within half a cent of the net, so the buyer's
// check of every line (net = quantity × price) holds.
#include "invoices/einvoice/einvoice.h"

namespace tarvik::einvoice {

// "90.46", "2.454545": decimal point, no grouping; "0.00" for a zero quantity.
QString unitPriceText(Cents net, const Quantity& quantity);
// A quantity's text with its decimals and a point: {2921, 3} gives "2.921".
QString quantityText(const Quantity& quantity);
// The quantity of a value as it is printed with the given decimals.
Quantity quantityOf(double value, int decimals);

} // namespace tarvik::einvoice

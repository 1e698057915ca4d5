// A fleet of simulated boxes, as the http_sd of Prometheus reads it.
#pragma once

#include "host/http/http.h"
#include "host/site/demo.h"

namespace host {

// A group of one target for each box of "?boxes=": {"targets": [this server], "labels": instance,
// site, and the scenario that its scrape asks for}. "&faults=" of them, evenly spread, have a
// finding that is no mere notice, each another one until all have been used; the others are well.
// A problem when either number is none that it has.
HttpAnswer ListFleet(const HttpRequest& request, const Demo& demo);

}  // namespace host

#include "host/cli/command_options.h"

#include <CLI/CLI.hpp>

namespace host {

void AddNotifyOptions(CLI::App& notify, NotifyOptions& options) {
  notify
      .add_option("--hooks", options.hooks,
                  "The folder with what is run, by default " + options.hooks)
      ->type_name("DIR");
  notify
      .add_option("--state", options.state,
                  "The folder that keeps what was told, by default $STATE_DIRECTORY, else "
                  "/var/lib/vela-health-notify")
      ->type_name("DIR");
  notify.add_option("--timeout", options.timeout, "The seconds that a hook may take, or 30")
      ->check(CLI::Range(1, 3600).description(""))
      ->type_name("SECONDS");
  notify.add_flag("--test", options.test, "Send a sample through every hook, and say how it went");
  notify.footer(notify.get_footer() +
                "\nExit status: 0 all was delivered, or there was nothing to tell; 1 a hook did\n"
                "not take it, and is tried again the next time; 69 the machine gave no answer,\n"
                "which was told; 73 what was told could not be kept; 75 another one is at work.");
}

void AddServeOptions(CLI::App& serve, ServeOptions& options) {
  serve
      .add_option("--listen", options.listen, "The address to listen on, by default 127.0.0.1:8480")
      ->type_name("ADDR:PORT");
  serve.add_option("--port", options.port, "The port alone; 0 takes any free one")
      ->check(CLI::Range(0, 65535).description(""))
      ->type_name("PORT");
  serve.add_flag("--allow-remote", options.allowRemote,
                 "Listen on addresses that other machines reach");
  serve
      .add_option("--host-name", options.hostNames,
                  "A name under which browsers or a proxy reach it, beside this machine's own")
      ->type_name("NAME");
}

}  // namespace host

// SPDX-License-Identifier: MIT
// What publishing costs with libmosquitto alone: the messages that the gateway would publish of 1,000 variables, retained
// and with QoS 1, as fast as the broker acknowledges them.
//
//   mqtt_publisher PORT MESSAGES     prints messages a second and microseconds of processor time for each

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <string>

#include <mosquitto.h>
#include <sys/resource.h>

namespace
{

const int variables = 1000;
const int mostUnderWay = 200; // as the gateway

struct Progress {
    bool isConnected = false;
    int sent = 0;
    int acknowledged = 0;
};

double processorSeconds()
{
    rusage usage = {};
    getrusage(RUSAGE_SELF, &usage);
    const auto seconds = [](const timeval& time) {
        return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_usec) / 1e6;
    };
    return seconds(usage.ru_utime) + seconds(usage.ru_stime);
}

void publishOne(mosquitto* client, Progress* progress)
{
    const std::string topic = "bench/variable " + std::to_string(progress->sent % variables);
    const std::string payload = "{\"value\":" + std::to_string(progress->sent % 65536) +
                                ",\"at\":1700000000000,\"quality\":\"good\"}";
    if (mosquitto_publish(client, nullptr, topic.c_str(), static_cast<int>(payload.size()), payload.c_str(), 1,
                          true) == MOSQ_ERR_SUCCESS)
        ++progress->sent;
}

void publishAll(mosquitto* client, Progress* progress, int messages)
{
    while (progress->acknowledged < messages) {
        while (progress->isConnected && progress->sent < messages &&
               progress->sent - progress->acknowledged < mostUnderWay)
            publishOne(client, progress);
        if (mosquitto_loop(client, 100, 100) != MOSQ_ERR_SUCCESS)
            std::exit(1);
    }
}

} // namespace

int main(int argc, char* argv[])
{
    if (argc != 3)
        return 2;
    Progress progress;
    mosquitto_lib_init();
    mosquitto* const client = mosquitto_new("bench", true, &progress);
    mosquitto_int_option(client, MOSQ_OPT_SEND_MAXIMUM, 65535);
    mosquitto_connect_callback_set(client, [](mosquitto*, void* object, int code) {
        static_cast<Progress*>(object)->isConnected = code == 0;
    });
    mosquitto_publish_callback_set(
        client, [](mosquitto*, void* object, int) { ++static_cast<Progress*>(object)->acknowledged; });
    if (mosquitto_connect(client, "127.0.0.1", std::atoi(argv[1]), 60) != MOSQ_ERR_SUCCESS)
        return 1;
    const int messages = std::atoi(argv[2]);
    const auto begin = std::chrono::steady_clock::now();
    publishAll(client, &progress, messages);
    const double seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - begin).count();
    std::printf("%.0f %.3f\n", messages / seconds, processorSeconds() / messages * 1e6);
    mosquitto_destroy(client);
    return 0;
}

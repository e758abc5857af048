/* SPDX-License-Identifier: MIT */
/* A program in C on libplcruntime: it watches two variables, writes one of them, and says how that ended.
 *     c_runtime HOST PORT [DRIVER]
 */
#include <plcruntime.h>

#include <pthread.h>
#include <stdio.h>

static pthread_mutex_t mutex = PTHREAD_MUTEX_INITIALIZER;
static pthread_cond_t changed = PTHREAD_COND_INITIALIZER;
static int fresh[2]; /* by the number of the variable */
static int written;  /* 1: confirmed, -1: failed */

/* Both are called on the runtime's own thread: they note and return. */
static void show(void* name, int variable, const plcruntime_value* value)
{
    printf("%s is %s (%s)\n", (const char*)name, plcruntime_value_text(value),
           plcruntime_state_name(plcruntime_value_state(value)));
    pthread_mutex_lock(&mutex);
    fresh[variable] = plcruntime_value_state(value) == PLCRUNTIME_FRESH;
    pthread_cond_signal(&changed);
    pthread_mutex_unlock(&mutex);
}

static void end_of_write(void* context, const plcruntime_result* result)
{
    const int confirmed = plcruntime_result_failure(result) == PLCRUNTIME_NO_FAILURE;
    (void)context;
    printf("write: %s\n", confirmed ? "confirmed by the controller" : plcruntime_result_failure_text(result));
    pthread_mutex_lock(&mutex);
    written = confirmed ? 1 : -1;
    pthread_cond_signal(&changed);
    pthread_mutex_unlock(&mutex);
}

static int use(plcruntime* runtime)
{
    char temperature[] = "temperature", pump[] = "pump";
    if (plcruntime_subscribe(runtime, "9:100", "float32", show, temperature) < 0 ||
        plcruntime_subscribe(runtime, "2:17", NULL, show, pump) < 0 ||
        plcruntime_start(runtime) != PLCRUNTIME_OK ||
        plcruntime_write_number(runtime, "9:100", "float32", 21.5, end_of_write, NULL) != PLCRUNTIME_OK)
        return 2;
    pthread_mutex_lock(&mutex);
    while (written == 0 || (written > 0 && !(fresh[0] && fresh[1])))
        pthread_cond_wait(&changed, &mutex);
    pthread_mutex_unlock(&mutex);
    return written > 0 ? 0 : 1;
}

int main(int argc, char* argv[])
{
    plcruntime_option options[4] = {{"host", "127.0.0.1"}, {"port", "502"}, {NULL, NULL}, {NULL, NULL}};
    plcruntime* runtime = NULL;
    int status = 2;
    if (argc > 1)
        options[0].value = argv[1];
    if (argc > 2)
        options[1].value = argv[2];
    if (argc > 3) {
        options[2].key = "driver"; /* without it, it is looked for beside libplcruntime.so */
        options[2].value = argv[3];
    }
    if (plcruntime_open(options, &runtime) == PLCRUNTIME_OK)
        status = use(runtime);
    if (status == 2)
        fprintf(stderr, "c_runtime: %s\n", plcruntime_last_error());
    plcruntime_close(runtime); /* no callback comes after it */
    return status;
}

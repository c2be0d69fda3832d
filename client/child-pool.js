'use strict';
// Children that read replays, one each at a time. They are started when needed and used again; they are ended when a
// read is given up, and when nothing has been read for a while.

const { ChildProcess } = require('./child-process.js');
const { ReplayError } = require('./replay-error.js');

const closed = (path) => new ReplayError('ERR_ABORTED', 'the client is closed', path);

const lateFailure = ({ timeout, path }) => new ReplayError('ERR_TIMEOUT', `more than ${timeout} ms`, path);

class ChildPool {
  #size;
  #execPath;
  #idleMs;
  #waiting = new Set(); // jobs in order of arrival
  #jobs = new Map(); // child -> the job it works on, or null
  #dying = new Set(); // children that were told to end
  #heeded = new Map(); // signal -> { jobs, onAbort }: one listener each, since Node.js warns of more than ten
  #idleTimer;
  #isClosed = false;

  // size: how many children there are at most. idleMs: for how long they wait for more to read.
  constructor(size, execPath, idleMs = 10_000) {
    this.#size = size;
    this.#execPath = execPath;
    this.#idleMs = idleMs;
  }

  // Resolves with the result of finish(answer), where answer is a child's answer to the request. path: the file's name
  // in errors. timeout: milliseconds from the start of the child's work until the result is there. Rejects with
  // ERR_ABORTED, ERR_TIMEOUT, ERR_CHILD_START or ERR_CHILD_LOST, and with what finish throws.
  run(request, { path, signal, timeout, finish }) {
    return new Promise((resolve, reject) => {
      if (this.#isClosed) throw closed(path);
      if (signal?.aborted) throw ReplayError.aborted(signal, path);
      const job = { request, path, signal, timeout, finish, resolve, reject };
      if (signal) this.#heed(signal, job);
      this.#waiting.add(job);
      this.#assign();
    });
  }

  // Rejects all running and waiting jobs with ERR_ABORTED. Resolves when no child is left.
  async close() {
    this.#isClosed = true;
    const jobs = [...this.#waiting, ...this.#jobs.values()].filter((job) => job !== null);
    this.#giveUp(jobs, ({ path }) => closed(path));
    this.#endIdle();
    await Promise.all([...this.#dying].map((child) => child.gone));
  }

  #assign() {
    clearTimeout(this.#idleTimer);
    for (const job of this.#waiting) {
      const child = this.#freeChild();
      if (child === undefined) return;
      this.#waiting.delete(job);
      this.#start(job, child);
    }
    this.#idleTimer = setTimeout(() => this.#endIdle(), this.#idleMs).unref();
  }

  #heed(signal, job) {
    if (!this.#heeded.has(signal)) {
      const jobs = new Set();
      const onAbort = () => this.#giveUp(jobs, ({ path }) => ReplayError.aborted(signal, path));
      signal.addEventListener('abort', onAbort);
      this.#heeded.set(signal, { jobs, onAbort });
    }
    this.#heeded.get(signal).jobs.add(job);
  }

  // The job is concluded: neither its signal nor its time limit concerns it any more.
  #forget(job) {
    clearTimeout(job.timer);
    const heeded = this.#heeded.get(job.signal);
    heeded?.jobs.delete(job);
    if (heeded?.jobs.size !== 0) return;
    job.signal.removeEventListener('abort', heeded.onAbort);
    this.#heeded.delete(job.signal);
  }

  #freeChild() {
    for (const [child, job] of this.#jobs) {
      if (job !== null) continue;
      if (child.isConnected) return child;
      // It was killed while idle, and its end is not reported yet.
      this.#end(child);
    }
    return this.#jobs.size < this.#size ? this.#newChild() : undefined;
  }

  #newChild() {
    const child = new ChildProcess(this.#execPath, {
      onMessage: (answer) => this.#answered(child, answer),
      onEnd: (code, reason) => this.#lost(child, code, reason),
    });
    return child;
  }

  #start(job, child) {
    this.#jobs.set(child, job);
    job.child = child;
    job.begun = performance.now();
    if (job.timeout !== undefined) {
      job.timer = setTimeout(() => this.#giveUp([job], lateFailure), job.timeout);
    }
    child.hold(true);
    child.send(job.request);
  }

  #answered(child, answer) {
    const job = this.#jobs.get(child);
    this.#jobs.set(child, null);
    child.hold(false);
    this.#forget(job);
    this.#assign(); // the child reads the next file while its answer is handled here
    try {
      const result = job.finish(answer);
      if (performance.now() - job.begun > job.timeout) throw lateFailure(job);
      job.resolve(result);
    } catch (error) {
      job.reject(error);
    }
  }

  // The child has ended while it was idle or at work.
  #lost(child, code, reason) {
    const job = this.#jobs.get(child);
    this.#jobs.delete(child);
    child.hold(false);
    if (job) {
      this.#forget(job);
      job.reject(new ReplayError(code, reason, job.path));
    }
    this.#assign();
  }

  // jobs: waiting or at work. errorOf(job): what each is rejected with.
  #giveUp(jobs, errorOf) {
    for (const job of jobs) {
      this.#forget(job);
      this.#waiting.delete(job);
      if (job.child !== undefined) this.#end(job.child);
      job.reject(errorOf(job));
    }
    this.#assign();
  }

  #endIdle() {
    for (const [child, job] of this.#jobs) if (job === null) this.#end(child);
  }

  #end(child) {
    this.#jobs.delete(child);
    this.#dying.add(child);
    child.gone.then(() => this.#dying.delete(child));
    child.kill();
  }
}

module.exports = { ChildPool };

'use strict';
// Children that read replays, one each at a time. They are started when needed and used again; they are ended when a
// read is given up, and when nothing has been read for a while.

const { ChildProcess } = require('./child-process.js');
const { ReplayError } = require('./replay-error.js');

const IDLE_MS = 10_000;

const closed = (path) => new ReplayError('ERR_ABORTED', 'the client is closed', path);

class ChildPool {
  #size;
  #execPath;
  #waiting = new Set(); // jobs in the order of their coming
  #jobs = new Map(); // child -> the job it works on, or null
  #dying = new Set(); // children that were told to end
  #heeded = new Map(); // signal -> { jobs, onAbort }: one listener each, since Node.js warns of more than ten
  #idleTimer;
  #isClosed = false;

  // size: how many children there are at most.
  constructor(size, execPath) {
    this.#size = size;
    this.#execPath = execPath;
  }

  // Resolves with a child's answer to the request. path: the file's name in errors. timeout: milliseconds that the
  // child may take. Rejects with ERR_ABORTED, ERR_TIMEOUT or ERR_CHILD_LOST.
  run(request, { path, signal, timeout }) {
    return new Promise((resolve, reject) => {
      if (this.#isClosed) throw closed(path);
      if (signal?.aborted) throw ReplayError.aborted(signal, path);
      const job = { request, path, signal, timeout, resolve, reject };
      if (signal) this.#heed(signal, job);
      this.#waiting.add(job);
      this.#assign();
    });
  }

  // Rejects what is being read or waits with ERR_ABORTED. Resolves when no child is left.
  async close() {
    this.#isClosed = true;
    for (const job of [...this.#waiting, ...this.#jobs.values()]) {
      if (job !== null) this.#giveUp(job, closed(job.path));
    }
    this.#endIdle();
    await Promise.all([...this.#dying].map((child) => child.gone));
  }

  #assign() {
    clearTimeout(this.#idleTimer);
    for (const job of this.#waiting) {
      if (job.signal?.aborted) continue; // it is about to be given up, and needs no child for that
      const child = this.#freeChild();
      if (child === undefined) return;
      this.#waiting.delete(job);
      this.#start(job, child);
    }
    this.#idleTimer = setTimeout(() => this.#endIdle(), IDLE_MS).unref();
  }

  #heed(signal, job) {
    if (!this.#heeded.has(signal)) {
      const jobs = new Set();
      const onAbort = () =>
        jobs.forEach((each) => this.#giveUp(each, ReplayError.aborted(signal, each.path)));
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
      // It was killed while it was idle, and that is not reported yet.
      this.#end(child);
    }
    return this.#jobs.size < this.#size ? this.#newChild() : undefined;
  }

  #newChild() {
    const child = new ChildProcess(this.#execPath, {
      onMessage: (answer) => this.#settle(child, (job) => job.resolve(answer)),
      onEnd: (reason) => {
        const lost = (job) => job.reject(new ReplayError('ERR_CHILD_LOST', reason, job.path));
        this.#settle(child, lost, { isGone: true });
      },
    });
    return child;
  }

  #start(job, child) {
    this.#jobs.set(child, job);
    job.child = child;
    if (job.timeout !== undefined) {
      const late = new ReplayError('ERR_TIMEOUT', `more than ${job.timeout} ms`, job.path);
      job.timer = setTimeout(() => this.#giveUp(job, late), job.timeout);
    }
    child.hold(true);
    child.send(job.request);
  }

  // The child has answered, or has ended while it was idle or at work.
  #settle(child, conclude, { isGone = false } = {}) {
    const job = this.#jobs.get(child);
    if (isGone) this.#jobs.delete(child);
    else this.#jobs.set(child, null);
    child.hold(false);
    if (job !== null) {
      this.#forget(job);
      conclude(job);
    }
    this.#assign();
  }

  #giveUp(job, error) {
    this.#forget(job);
    job.reject(error);
    this.#waiting.delete(job);
    if (job.child !== undefined) this.#end(job.child);
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

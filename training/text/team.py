"""Processes that train together: of every step each takes the mean of all gradients."""

import multiprocessing
import os
import threading

import torch

_PATIENCE = 900  # seconds that one waits for the others


class Team:
    """Shared by its members. One thread each: two threads of one process need four times the processor's time."""

    def __init__(self, members, size):
        """size: numbers in a gradient at most."""
        self.members = members
        self._meeting = torch.multiprocessing.get_context("spawn").Barrier(members)
        self._given = torch.zeros(members, size).share_memory_()
        self._clock = torch.zeros(1, dtype=torch.float64).share_memory_()

    def meet(self):
        self._meeting.wait(_PATIENCE)

    def together(self, member, parameters, clock):
        """Makes the gradients the mean of all members'; returns the clock of member 0."""
        if self.members == 1:
            return clock
        given = torch.cat([p.grad.flatten() for p in parameters])
        self._given[member, :len(given)] = given
        if member == 0:
            self._clock[0] = clock
        self.meet()
        mean, clock = self._given.mean(0)[:len(given)], float(self._clock)
        self.meet()  # before one writes its next gradient
        for parameter, part in zip(parameters, mean.split([p.numel() for p in parameters])):
            parameter.grad.copy_(part.view_as(parameter))
        return clock

    def run(self, task):
        """task(member, team) in each member's process, 0 in this one; what that returns. Where one fails all do."""
        spawning = torch.multiprocessing.get_context("spawn")
        others = [spawning.Process(target=self._play, args=(task, member), daemon=True)
                  for member in range(1, self.members)]
        for other in others:
            other.start()
        given = self._play(task, 0)
        for other in others:
            other.join()
        return given

    def _play(self, task, member):
        if member:
            threading.Thread(target=_end_with_parent, daemon=True).start()
        try:
            return task(member, self)
        except BaseException:
            self._meeting.abort()
            raise


def _end_with_parent():
    multiprocessing.parent_process().join()
    os._exit(1)  # that one was killed

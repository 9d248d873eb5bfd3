// Virtual channels derived from one channel: the setup dialog, the new channel shown under its
// source while the worker fills it, and its removal.

#include "chnmap.h"
#include "cmtdchildcontainer.h"
#include "cmtdchildframe.h"
#include "cmtdviewananame.h"
#include "cmtdviewanawave.h"
#include "virchndlg.h"
#include "virtualchannel.h"

#include <QMessageBox>
#include <QStatusBar>

#include <algorithm>
#include <memory>

void CCmtdChildFrame::deriveVirtualChannel(int kind, CChnMapAnalog *source, int row)
{
    std::unique_ptr<CVirChnDlgBase> dialog(MakeVirChnDialog(kind, m_file, *source, this));
    if (!dialog || dialog->exec() != QDialog::Accepted || !dialog->channel())
        return;
    CChnMapAnalog *channel = dialog->channel();
    // Shown as computed: scaled by its own peak, not yet a channel of any form.
    channel->flags = (channel->flags | CChnMapBase::FlagVertExtend) & ~uint32_t(CChnMapBase::FlagRelated);
    m_waveView->addChannelToView(channel, row, true);
    m_nameView->rebuildValues();
    m_nameView->update();
    if (m_thread.pendingKind() != CCmtdThread::KindNone) {
        // One job at a time: the channel stands with zeros until it is derived again.
        statusBar()->showMessage(
            tr("A job is running: %1 stays empty; derive it again when the job has ended.")
                .arg(m_file.Text(channel->Name())),
            10000);
        return;
    }
    auto *job = new VirtualChannelJob{dialog->params(), channel, source};
    if (!submitJob(kind, job))
        delete job;
}

bool CCmtdChildFrame::deleteVirtualChannel(CChnMapAnalog *channel)
{
    if (!channel || !channel->isVirtual)
        return false;
    // A job may be writing the channel or reading it as a source.
    if (isBackgroundBusy() || m_thread.pendingKind() != CCmtdThread::KindNone) {
        QMessageBox::warning(
            this, QString(),
            tr("A Background Service is Running Now, Please Retry this Operation for a moment!"));
        return false;
    }
    const QString name = m_file.Text(channel->Name());
    if (QMessageBox::question(
            this, QString(),
            tr("Delete the virtual channel %1? Its curve is gone until it is derived again.").arg(name)) !=
        QMessageBox::Yes)
        return false;
    m_anaContainer->forgetChannel(channel);
    m_nameView->forgetChannel(channel);
    m_waveView->takeOutChannel(channel);
    m_hiddenBefore.erase(std::remove_if(m_hiddenBefore.begin(), m_hiddenBefore.end(),
                                        [channel](const auto &entry) { return entry.first == channel; }),
                         m_hiddenBefore.end());
    RemoveVirtualChannel(m_file, channel);
    m_file.BuildScaleGroups();
    m_document.rebuildEnvelopes(); // the summaries stand by the stores' places
    m_waveView->layoutRows(true);
    m_nameView->rebuildValues();
    m_nameView->update();
    statusBar()->showMessage(tr("%1 deleted").arg(name), 10000);
    return true;
}

void CCmtdChildFrame::showAddedChannels(const std::vector<CChnMapAnalog *> &channels)
{
    if (channels.empty())
        return;
    // New analog rows go after the last analog row, above the status channels.
    const auto &rows = m_waveView->rows;
    int after = -1;
    for (int i = 0; i < int(rows.size()); ++i) {
        for (const CChnMapBase *map : rows[size_t(i)].channels) {
            if (map->chnType == CChnMapBase::TypeAnalog)
                after = i;
        }
    }
    if (after < 0)
        after = int(rows.size()) - 1;
    for (CChnMapAnalog *channel : channels) {
        channel->flags = (channel->flags | CChnMapBase::FlagVertExtend) & ~uint32_t(CChnMapBase::FlagRelated);
        const size_t before = rows.size();
        m_waveView->addChannelToView(channel, after, true);
        if (rows.size() > before)
            ++after;
    }
    m_file.BuildScaleGroups();
    m_document.rebuildEnvelopes();
    m_nameView->rebuildValues();
    m_nameView->update();
    Q_EMIT m_document.displayChanged();
}
